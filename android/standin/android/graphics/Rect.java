// SPDX-License-Identifier: Apache-2.0
// A stand-in, for compiling and testing only.
package android.graphics;

public final class Rect {
  public int left;
  public int top;
  public int right;
  public int bottom;

  public Rect(int left, int top, int right, int bottom) {
    this.left = left;
    this.top = top;
    this.right = right;
    this.bottom = bottom;
  }
}
