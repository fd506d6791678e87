// SPDX-License-Identifier: Apache-2.0
// The computations, for any backend. Included into an unnamed namespace of each
// unit that has one, so that no set's code is taken for another's.

template <class V, Order O>
[[gnu::always_inline]] inline typename V::W16 probe_value(const uint8_t *low,
                                                          const uint8_t *high) {
  typename V::W16 l;
  typename V::W16 h;
  typename V::W16 unused;
  V::scale(V::template load<O>(low), V::make_factor(1), l, unused);
  V::scale(V::template load<O>(high), V::make_factor(128), h, unused);
  return V::add(l, V::add(h, h));
}

template <class V>
struct Probe422 {
  typename V::U8 luma;
  typename V::Pairs pairs;
};
template <class V, Order O, int kLuma>
[[gnu::always_inline]] inline Probe422<V> probe_422(const uint8_t *in) {
  Probe422<V> r;
  V::template load_422<O, kLuma>(in, r.luma, r.pairs);
  return r;
}

template <class V, Order O>
[[gnu::always_inline]] inline typename V::W16 probe_op(ProbeOp op,
                                                       const uint8_t *in) {
  constexpr int kRow = 2 * kProbeMaxPixels;
  const uint8_t *const rows[kProbePlanes] = {in, in + kRow, in + 2 * kRow,
                                             in + 3 * kRow};
  typename V::W16 whole = V::fill(0);
  typename V::W16 half = whole;
  const auto pairs_of = [&] { return V::template load_pairs<O>(rows[0]); };
  const auto zip_of = [&] { return V::template load_zip<O>(rows[0], rows[1]); };
  const auto wide_of = [&] {
    return V::template load_zip_wide<O>(rows[0], rows[1]);
  };
  const auto scaled = [&](typename V::U8 v, int k) {
    V::scale(v, V::make_factor(k), whole, half);
  };
  switch (op) {
    case kProbeValue:
      return probe_value<V, O>(rows[0], rows[1]);
    case kProbeScale149:
      scaled(V::template load<O>(rows[0]), 149);
      return whole;
    case kProbeScale149Half:
      scaled(V::template load<O>(rows[0]), 149);
      return half;
    case kProbeScale255:
      scaled(V::template load<O>(rows[0]), 255);
      return V::add(whole, half);
    case kProbeAddSaturate:
      return V::add_saturate(probe_value<V, O>(rows[0], rows[1]),
                             probe_value<V, O>(rows[2], rows[3]));
    case kProbePairsDot:
      return V::dot(pairs_of(), V::template make_dot<-25, -52>(-1160));
    case kProbePairsDotSwapped:
      return V::dot(pairs_of(), V::template make_dot<-104, -50>(3640));
    case kProbePairsDotFirst:
      return V::dot(pairs_of(), V::template make_dot<129, 0>(-32768));
    case kProbePairsDotSecond:
      return V::dot(pairs_of(), V::template make_dot<0, 255>(32767));
    case kProbePairsHalfDotFirst:
      return V::half_dot(pairs_of(), V::template make_half_dot<0, 511>(-7));
    case kProbePairsHalfDotSecond:
      return V::half_dot(pairs_of(), V::template make_half_dot<1, 409>(3640));
    case kProbeZipDot:
      return V::dot(zip_of(), V::template make_dot<100, 27>(1));
    case kProbeZipHalfDot:
      return V::half_dot(zip_of(), V::template make_half_dot<1, 409>(0));
    case kProbeWideDot:
      return V::dot(wide_of(), V::template make_dot<-25, -52>(-1160));
    case kProbeWideHalfDot:
      return V::half_dot(wide_of(), V::template make_half_dot<0, 1>(5));
    case kProbe422LumaFirst:
      scaled(probe_422<V, O, 0>(rows[0]).luma, 129);
      return whole;
    case kProbe422LumaFirstChroma:
      return V::dot(probe_422<V, O, 0>(rows[0]).pairs,
                    V::template make_dot<100, 27>(0));
    case kProbe422LumaSecond:
      scaled(probe_422<V, O, 1>(rows[0]).luma, 129);
      return whole;
    case kProbe422LumaSecondChroma:
      return V::dot(probe_422<V, O, 1>(rows[0]).pairs,
                    V::template make_dot<100, 27>(0));
    case kProbeWordsLuma:
      scaled(V::template load_words<O>(rows[0]), 129);
      return whole;
    case kProbeWordPairsDot:
      return V::dot(V::template load_word_pairs<O>(rows[0]),
                    V::template make_dot<100, 27>(0));
    case kProbeShift1:
      return V::template shift_right<1>(probe_value<V, O>(rows[0], rows[1]));
    case kProbeShift7:
      return V::template shift_right<7>(probe_value<V, O>(rows[0], rows[1]));
    case kProbeShift8:
      return V::template shift_right<8>(probe_value<V, O>(rows[0], rows[1]));
    case kProbeOps:
      break;
  }
  return whole;
}

constexpr PixelFormat kProbeFormats[] = {
    {2, 1, 0, 0}, {2, 0, 0, 1}, {3, 0, 1, 2}, {3, 2, 1, 0},
    {4, 0, 1, 2}, {4, 2, 1, 0}, {4, 1, 2, 3}, {4, 3, 2, 1}};

// Calls each<format>() for the format at place I and those behind it.
template <int I = 0, class Each>
void probe_formats(Each each) {
  if constexpr (I < 8) {
    each.template operator()<kProbeFormats[I]>();
    probe_formats<I + 1>(each);
  }
}

template <class V>
void probe_bytes(ProbeSink sink, const uint8_t *in, uint8_t *out) {
  constexpr int n = V::n;
  probe_formats([&]<PixelFormat F>() {
    const uint8_t *at = in;
    const auto pixels = V::template take_pixels<F>(at);
    *out++ = static_cast<uint8_t>(at - in == n * F.bytes);
    const auto u = V::template make_weights<F, -38, -74, 112>(0x8080);
    const auto v = V::template make_weights<F, 127, -106, -21>(0x8080);
    if (sink == kSinkWeighed) {
      V::store_bytes(out, V::weigh(pixels, u));
      V::store_bytes(
          out + n,
          V::weigh(pixels, V::template make_weights<F, 77, 150, 29>(4096)));
      out += 2 * n;
    } else if (sink == kSinkEvenPairs) {
      V::store_pairs(out, V::weigh_even(pixels, u, v));
      out += n;
    } else if (sink == kSinkEvenRows) {
      V::store_rows(out, out + n / 2, V::weigh_even(pixels, u, v));
      out += n;
    } else if constexpr (F.bytes > 2 && F.r == 0) {
      V::store_565(out, pixels);
      out += 2 * n;
    } else if constexpr (F.bytes == 2 && F.r == 1) {
      V::store_rgba(out, pixels);
      out += 4 * n;
    }
  });
}

template <class V>
void probe_moves(const uint8_t *in, uint8_t *out) {
  constexpr int n = V::n;
  const auto a = V::load_bytes(in);
  const auto b = V::load_bytes(in + n);
  const auto loaded = V::load_unzip(in);
  const auto made = V::unzip(b, a);
  V::store_bytes(out, loaded.even);
  V::store_bytes(out + n, loaded.odd);
  V::store_bytes(out + 2 * n, made.even);
  V::store_bytes(out + 3 * n, made.odd);
  V::store_zip(out + 4 * n, a, b);
  V::store_bytes(out + 6 * n, V::average_down(a, b));
  V::store_bytes(out + 7 * n, V::load_words_by_4(in));
  // Backends differ in how much a block is; 2 n is a whole number of them.
  const uint8_t *from = in;
  const uint8_t *again = in;
  uint8_t *to = out + 8 * n;
  uint8_t *swapped = out + 10 * n;
  for (int done = 0; done < 2 * n; done += V::kBlock) {
    V::put_block(to, V::take_block(from));
    V::put_block(swapped, V::swap_pairs(V::take_block(again)));
  }
}

template <class V, bool kStream>
void probe_store(ProbeOp op, ProbeSink sink, const uint8_t *in, uint8_t *out) {
  const uint8_t *const bytes = in + 2 * kProbeMaxPixels;
  switch (sink) {
    case kSinkWords:
      V::template store16<kStream>(out, probe_op<V, Order::kWords>(op, in));
      break;
    case kSinkPack565: {
      const auto v = probe_op<V, Order::kWords>(op, in);
      const auto w = probe_op<V, Order::kWords>(kProbeAddSaturate, in);
      const auto u = probe_op<V, Order::kWords>(kProbeScale255, in);
      V::template store16<kStream>(out, V::template pack565<7, 6, 6>(v, w, u));
      break;
    }
    case kSinkThree: {
      const auto v = probe_op<V, Order::kBytes>(op, in);
      V::template store3<kStream>(out, V::template narrow<6>(v),
                                  V::template narrow<7>(v),
                                  V::load_bytes(bytes));
      V::store_bytes(out + 3 * V::n, V::template narrow<6>(v));
      break;
    }
    case kSinkFourHigh255: {
      const auto v = probe_op<V, Order::kQuads>(op, in);
      const auto w = probe_op<V, Order::kQuads>(kProbeAddSaturate, in);
      V::template store4<kStream>(out, V::template join<7, 6>(v, w),
                                  V::template join_high_255<6>(v));
      break;
    }
    case kSinkFourLow255: {
      const auto v = probe_op<V, Order::kQuads>(op, in);
      const auto w = probe_op<V, Order::kQuads>(kProbeAddSaturate, in);
      V::template store4<kStream>(out, V::template join_low_255<7>(v),
                                  V::template join<6, 7>(w, v));
      break;
    }
    case kSinkUnshifted: {
      const auto v = probe_op<V, Order::kQuads>(op, in);
      const auto w = probe_op<V, Order::kQuads>(kProbeAddSaturate, in);
      V::template store4<kStream>(out, V::template join<0, 0>(v, w),
                                  V::template join_high_255<0>(v));
      break;
    }
    case kSinkWeighed:
    case kSinkEvenPairs:
    case kSinkEvenRows:
    case kSinkRgb:
      probe_bytes<V>(sink, in + 2 * kProbeMaxPixels, out);
      break;
    case kSinkMoved:
      probe_moves<V>(in + 2 * kProbeMaxPixels, out);
      break;
    case kProbeSinks:
      break;
  }
}

template <class V>
void probe_run(ProbeOp op, ProbeSink sink, bool stream, const uint8_t *in,
               uint8_t *out) {
  if (stream) {
    probe_store<V, true>(op, sink, in, out);
    V::end_stream();
  } else {
    probe_store<V, false>(op, sink, in, out);
  }
}
