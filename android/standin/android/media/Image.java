// SPDX-License-Identifier: Apache-2.0
// A stand-in, for compiling and testing only.
package android.media;

import android.graphics.Rect;
import java.nio.ByteBuffer;

public abstract class Image {
  public abstract int getFormat();

  public abstract int getWidth();

  public abstract int getHeight();

  public abstract Rect getCropRect();

  public abstract Plane[] getPlanes();

  public abstract static class Plane {
    public abstract int getRowStride();

    public abstract int getPixelStride();

    public abstract ByteBuffer getBuffer();
  }
}
