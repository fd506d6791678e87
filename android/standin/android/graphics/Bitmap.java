// SPDX-License-Identifier: Apache-2.0
// A stand-in, for compiling and testing only: pixels in a direct buffer.
package android.graphics;

import java.nio.ByteBuffer;

public final class Bitmap {
  public final int width;
  public final int height;
  public final int stride;
  public final int format;
  public final ByteBuffer pixels;
  public boolean mutable = true;
  public int locks;

  public Bitmap(int width, int height, int stride, int format, ByteBuffer pixels) {
    this.width = width;
    this.height = height;
    this.stride = stride;
    this.format = format;
    this.pixels = pixels;
  }

  public boolean isMutable() {
    return mutable;
  }
}
