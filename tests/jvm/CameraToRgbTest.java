// SPDX-License-Identifier: Apache-2.0
// org.orumlox.CameraToRgb on a desktop's Java: what it makes of frames of every kind, pixel by
// pixel, and what it refuses. Exits with 1 when something is not as it should be.
import android.graphics.Bitmap;
import android.graphics.Rect;
import android.media.Image;
import java.nio.ByteBuffer;
import java.util.Arrays;
import java.util.Random;
import org.orumlox.CameraToRgb;

public final class CameraToRgbTest {
  private static final Random random = new Random(1);

  private static int between(int low, int high) {
    return low + random.nextInt(high - low + 1);
  }

  private static ByteBuffer noise(int size) {
    byte[] bytes = new byte[size];
    random.nextBytes(bytes);
    ByteBuffer buffer = ByteBuffer.allocateDirect(size);
    buffer.put(bytes).rewind();
    return buffer;
  }

  private static byte[] content(ByteBuffer buffer) {
    byte[] bytes = new byte[buffer.capacity()];
    ByteBuffer all = buffer.duplicate();
    all.clear();
    all.get(bytes);
    return bytes;
  }

  /** A frame: how it lies, and what part of it is wanted how. */
  private static final class Frame extends Image {
    int width = between(1, 40), height = between(1, 20);
    int imageFormat = 35;
    ByteBuffer[] planes = new ByteBuffer[3];
    int[] rows = new int[3], pixels = {1, 1, 1};
    int x = between(0, width - 1), y = between(0, height - 1);
    int w = between(1, width - x), h = between(1, height - y);
    int rotation = 90 * between(0, 3);
    boolean mirror = random.nextBoolean();
    int standard = random.nextBoolean() ? CameraToRgb.BT601 : CameraToRgb.BT709_FULL;

    Frame() {
      int halfWidth = (width + 1) / 2, halfHeight = (height + 1) / 2;
      rows[0] = width + between(0, 5);
      planes[0] = plane(rows[0] * (height - 1) + width);
      int kind = between(0, 2);
      if (kind == 0) {
        for (int p = 1; p < 3; ++p) {
          rows[p] = halfWidth + between(0, 5);
          planes[p] = plane(rows[p] * (halfHeight - 1) + halfWidth);
        }
        return;
      }
      // In turn, the first lacking the last one's byte, as Android hands them out.
      pixels[1] = pixels[2] = 2;
      rows[1] = rows[2] = 2 * halfWidth + between(0, 5);
      int bytes = rows[1] * (halfHeight - 1) + 2 * halfWidth;
      ByteBuffer pairs = plane(bytes);
      int at = pairs.position();
      planes[kind] = pairs.duplicate();
      planes[kind].limit(at + bytes - 1);
      pairs.position(at + 1);
      planes[3 - kind] = pairs.slice();
    }

    // Not from its memory's beginning on.
    private static ByteBuffer plane(int size) {
      int before = between(0, 3);
      ByteBuffer buffer = noise(before + size);
      buffer.position(before);
      return buffer;
    }

    int sample(int p, int atX, int atY) {
      int half = p == 0 ? 1 : 2;
      int at = atY / half * rows[p] + atX / half * pixels[p];
      return planes[p].get(planes[p].position() + at) & 255;
    }

    int outWidth() {
      return rotation % 180 == 0 ? w : h;
    }

    int outHeight() {
      return rotation % 180 == 0 ? h : w;
    }

    CameraToRgb converter() {
      return new CameraToRgb().rotation(rotation).mirror(mirror).colorStandard(standard);
    }

    void toBuffer(ByteBuffer to, int stride, int format) {
      converter()
          .crop(x, y, w, h)
          .toBuffer(
              planes, rows, pixels, width, height, to, outWidth(), outHeight(), stride, format);
    }

    @Override
    public int getFormat() {
      return imageFormat;
    }

    @Override
    public int getWidth() {
      return width;
    }

    @Override
    public int getHeight() {
      return height;
    }

    @Override
    public Rect getCropRect() {
      return new Rect(x, y, x + w, y + h);
    }

    @Override
    public Plane[] getPlanes() {
      Plane[] result = new Plane[3];
      for (int i = 0; i < 3; ++i) {
        final int p = i;
        result[p] =
            new Plane() {
              @Override
              public int getRowStride() {
                return rows[p];
              }

              @Override
              public int getPixelStride() {
                return pixels[p];
              }

              @Override
              public ByteBuffer getBuffer() {
                return planes[p];
              }
            };
      }
      return result;
    }
  }

  private static int clamp(int sum) {
    return Math.min(Math.max((sum + 128) >> 8, 0), 255);
  }

  /** The pixel (x, y) of the crop as its bytes in memory. */
  private static byte[] pixel(Frame f, int x, int y, int format) {
    int u = f.sample(1, f.x + x, f.y + y) - 128;
    int v = f.sample(2, f.x + x, f.y + y) - 128;
    boolean video = f.standard == CameraToRgb.BT601;
    int luma = f.sample(0, f.x + x, f.y + y);
    luma = video ? 298 * (luma - 16) : 256 * luma;
    int r = clamp(luma + (video ? 409 : 394) * v);
    int g = clamp(luma - (video ? 100 : 47) * u - (video ? 208 : 118) * v);
    int b = clamp(luma + (video ? 516 : 465) * u);
    if (format == CameraToRgb.RGBA_8888) {
      return new byte[] {(byte) r, (byte) g, (byte) b, (byte) 255};
    }
    int word = r >> 3 << 11 | g >> 2 << 5 | b >> 3;
    return new byte[] {(byte) word, (byte) (word >> 8)};
  }

  private static byte[] expected(Frame f, ByteBuffer to, int stride, int format) {
    byte[] bytes = content(to);
    for (int y = 0; y < f.h; ++y) {
      for (int x = 0; x < f.w; ++x) {
        int left = x, down = y;
        for (int turned = 0, height = f.h, width = f.w; turned < f.rotation; turned += 90) {
          int before = left;
          left = height - 1 - down;
          down = before;
          int side = height;
          height = width;
          width = side;
        }
        if (f.mirror) left = f.outWidth() - 1 - left;
        byte[] pixel = pixel(f, x, y, format);
        System.arraycopy(
            pixel, 0, bytes, to.position() + down * stride + left * pixel.length, pixel.length);
      }
    }
    return bytes;
  }

  private static void check(boolean holds, String what) {
    if (!holds) throw new AssertionError(what);
  }

  private static void contents() {
    for (int i = 0; i < 3000; ++i) {
      Frame f = new Frame();
      boolean words = random.nextBoolean();
      int format = words ? CameraToRgb.RGB_565 : CameraToRgb.RGBA_8888;
      int row = f.outWidth() * (words ? 2 : 4);
      int stride = row + between(0, 9);
      int size = stride * (f.outHeight() - 1) + row;
      if (random.nextBoolean()) {
        ByteBuffer pixels = noise(size);
        Bitmap bitmap =
            new Bitmap(f.outWidth(), f.outHeight(), stride, words ? 4 : 1, pixels);
        byte[] wanted = expected(f, pixels, stride, format);
        f.converter().toBitmap(f, bitmap);
        check(Arrays.equals(content(pixels), wanted) && bitmap.locks == 0, "bitmap " + i);
      } else {
        ByteBuffer pixels = noise(size + 5);
        pixels.position(3).limit(size + 3);
        byte[] wanted = expected(f, pixels, stride, format);
        f.toBuffer(pixels, stride, format);
        check(Arrays.equals(content(pixels), wanted) && pixels.position() == 3, "buffer " + i);
      }
    }
  }

  /** Full range if nothing is said, and all of the frame. */
  private static void defaults() {
    ByteBuffer[] planes = {noise(1), noise(1), noise(1)};
    planes[0].put(0, (byte) 50);
    planes[1].put(0, (byte) 128);
    planes[2].put(0, (byte) 200);
    ByteBuffer pixel = noise(4);
    int[] one = {1, 1, 1};
    new CameraToRgb().toBuffer(planes, one, one, 1, 1, pixel, 1, 1, 4, CameraToRgb.RGBA_8888);
    // 50 + 1.402 * 72 and 50 - 0.714 * 72, rounded down.
    check(Arrays.equals(content(pixel), new byte[] {(byte) 150, 0, 50, (byte) 255}), "defaults");
  }

  private interface Change {
    void make(Frame frame, Bitmap bitmap);
  }

  private static void refused(Class<? extends Exception> by, String what, Runnable call) {
    try {
      call.run();
    } catch (RuntimeException e) {
      check(by.isInstance(e), what + " is refused by " + e);
      return;
    }
    throw new AssertionError(what + " is not refused");
  }

  private static void bitmapRefused(Class<? extends Exception> by, String what, Change change) {
    Frame f = new Frame();
    ByteBuffer pixels = noise(f.w * f.h * 4);
    byte[] before = content(pixels);
    Bitmap bitmap = new Bitmap(f.outWidth(), f.outHeight(), f.outWidth() * 4, 1, pixels);
    change.make(f, bitmap);
    refused(by, what, () -> f.converter().toBitmap(f, bitmap));
    check(Arrays.equals(content(pixels), before) && bitmap.locks == 0, what + " is written");
  }

  private static void refusals() {
    Class<? extends Exception> argument = IllegalArgumentException.class;
    Class<? extends Exception> unsupported = UnsupportedOperationException.class;
    bitmapRefused(unsupported, "a JPEG", (f, b) -> f.imageFormat = 256);
    bitmapRefused(unsupported, "a standard", (f, b) -> f.standard = 5);
    bitmapRefused(argument, "a bitmap that is not mutable", (f, b) -> b.mutable = false);
    bitmapRefused(argument, "half a turn of a quarter", (f, b) -> f.rotation += 45);
    bitmapRefused(argument, "a crop outside", (f, b) -> f.x = f.width);
    bitmapRefused(
        argument, "a plane of nothing", (f, b) -> f.planes[2].limit(f.planes[2].position()));
    bitmapRefused(
        argument, "a plane in Java's memory", (f, b) -> f.planes[1] = ByteBuffer.allocate(9999));

    Frame f = new Frame();
    int row = f.outWidth() * 4;
    int size = row * f.outHeight();
    int rgba = CameraToRgb.RGBA_8888;
    for (ByteBuffer to :
        new ByteBuffer[] {
          ByteBuffer.allocate(size), noise(size).asReadOnlyBuffer(), noise(size - 1)
        }) {
      byte[] before = content(to);
      refused(argument, "a destination " + to, () -> f.toBuffer(to, row, rgba));
      check(Arrays.equals(content(to), before), "a refused call writes to " + to);
    }
    refused(argument, "a short stride", () -> f.toBuffer(noise(size), row - 1, rgba));
    refused(unsupported, "RGB888", () -> f.toBuffer(noise(size), row, 400));
    refused(argument, "no crop", () -> new CameraToRgb().crop(0, 0, 0, 1));
    refused(
        unsupported,
        "a bitmap of alpha alone",
        () -> f.converter().toBitmap(f, new Bitmap(f.w, f.h, row, 8, noise(size))));
    refused(
        IllegalStateException.class,
        "a bitmap that cannot be locked",
        () -> f.converter().toBitmap(f, new Bitmap(f.w, f.h, row, 1, null)));
    refused(
        argument,
        "a bitmap of another size",
        () -> f.converter().toBitmap(f, new Bitmap(999, 1, 4 * 999, 1, noise(4 * 999))));
  }

  public static void main(String[] arguments) {
    contents();
    defaults();
    refusals();
    System.out.println("3000 frames, 18 refusals: as they should be");
  }
}
