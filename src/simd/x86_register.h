// SPDX-License-Identifier: Apache-2.0
//
// The operations of a register on x86 whose intrinsics differ in their prefix
// alone. A backend includes this inside its register's struct, where LOX_MM
// adds the prefix to a name, and LOX_BITS the suffix of whole registers, too.
// No guard: a unit may have registers of several widths.

LOX_OP Reg load(const uint8_t *p) {
  return LOX_BITS(loadu)(reinterpret_cast<const Reg *>(p));
}
template <bool kStream>
LOX_OP void store(uint8_t *p, Reg v) {
  if constexpr (kStream) {
    LOX_BITS(stream)(reinterpret_cast<Reg *>(p), v);
  } else {
    LOX_BITS(storeu)(reinterpret_cast<Reg *>(p), v);
  }
}
LOX_OP Reg zero() { return LOX_BITS(setzero)(); }
LOX_OP Reg fill16(int k) { return LOX_MM(set1_epi16)(static_cast<short>(k)); }
LOX_OP Reg add16(Reg a, Reg b) { return LOX_MM(add_epi16)(a, b); }
LOX_OP Reg add_saturating_signed16(Reg a, Reg b) {
  return LOX_MM(adds_epi16)(a, b);
}
LOX_OP Reg sub16(Reg a, Reg b) { return LOX_MM(sub_epi16)(a, b); }
LOX_OP Reg add8(Reg a, Reg b) { return LOX_MM(add_epi8)(a, b); }
LOX_OP Reg add_saturating_unsigned8(Reg a, Reg b) {
  return LOX_MM(adds_epu8)(a, b);
}
LOX_OP Reg sub_saturating_unsigned8(Reg a, Reg b) {
  return LOX_MM(subs_epu8)(a, b);
}
LOX_OP Reg add_saturating_signed8(Reg a, Reg b) {
  return LOX_MM(adds_epi8)(a, b);
}
LOX_OP Reg min_unsigned8(Reg a, Reg b) { return LOX_MM(min_epu8)(a, b); }
LOX_OP Reg min_signed8(Reg a, Reg b) { return LOX_MM(min_epi8)(a, b); }
LOX_OP Reg max_signed8(Reg a, Reg b) { return LOX_MM(max_epi8)(a, b); }
LOX_OP Reg abs8(Reg v) { return LOX_MM(abs_epi8)(v); }
LOX_OP Reg multiply_high16(Reg a, Reg b) { return LOX_MM(mulhi_epu16)(a, b); }
LOX_OP Reg multiply_add8(Reg a, Reg b) { return LOX_MM(maddubs_epi16)(a, b); }
LOX_OP Reg bit_and(Reg a, Reg b) { return LOX_BITS(and)(a, b); }
// The bits of b where the mask has none.
LOX_OP Reg bit_and_not(Reg mask, Reg b) { return LOX_BITS(andnot)(mask, b); }
LOX_OP Reg bit_or(Reg a, Reg b) { return LOX_BITS(or)(a, b); }
LOX_OP Reg exclusive_or(Reg a, Reg b) { return LOX_BITS(xor)(a, b); }
template <int S>
LOX_OP Reg shift_left16(Reg v) {
  return LOX_MM(slli_epi16)(v, S);
}
template <int S>
LOX_OP Reg shift_right16(Reg v) {
  return LOX_MM(srli_epi16)(v, S);
}
LOX_OP Reg shift_right16_by(Reg v, __m128i by) {
  return LOX_MM(srl_epi16)(v, by);
}
LOX_OP Reg add_saturating_unsigned16(Reg a, Reg b) {
  return LOX_MM(adds_epu16)(a, b);
}
template <int S>
LOX_OP Reg shift_right_signed16(Reg v) {
  return LOX_MM(srai_epi16)(v, S);
}
LOX_OP Reg pack_unsigned16(Reg a, Reg b) { return LOX_MM(packus_epi16)(a, b); }
LOX_OP Reg unpack_low8(Reg a, Reg b) { return LOX_MM(unpacklo_epi8)(a, b); }
LOX_OP Reg unpack_high8(Reg a, Reg b) { return LOX_MM(unpackhi_epi8)(a, b); }
LOX_OP Reg unpack_low16(Reg a, Reg b) { return LOX_MM(unpacklo_epi16)(a, b); }
LOX_OP Reg unpack_high16(Reg a, Reg b) { return LOX_MM(unpackhi_epi16)(a, b); }
LOX_OP Reg unpack_low32(Reg a, Reg b) { return LOX_MM(unpacklo_epi32)(a, b); }
LOX_OP Reg unpack_high32(Reg a, Reg b) { return LOX_MM(unpackhi_epi32)(a, b); }
LOX_OP Reg unpack_low64(Reg a, Reg b) { return LOX_MM(unpacklo_epi64)(a, b); }
LOX_OP Reg unpack_high64(Reg a, Reg b) { return LOX_MM(unpackhi_epi64)(a, b); }
LOX_OP Reg shuffle8(Reg v, Reg places) {
  return LOX_MM(shuffle_epi8)(v, places);
}
LOX_OP Reg fill32(int k) { return LOX_MM(set1_epi32)(k); }
LOX_OP Reg add32(Reg a, Reg b) { return LOX_MM(add_epi32)(a, b); }
LOX_OP Reg multiply_low16(Reg a, Reg b) { return LOX_MM(mullo_epi16)(a, b); }
template <int S>
LOX_OP Reg shift_left32(Reg v) {
  return LOX_MM(slli_epi32)(v, S);
}
template <int S>
LOX_OP Reg shift_right32(Reg v) {
  return LOX_MM(srli_epi32)(v, S);
}
LOX_OP Reg sub8(Reg a, Reg b) { return LOX_MM(sub_epi8)(a, b); }
LOX_OP Reg average8(Reg a, Reg b) { return LOX_MM(avg_epu8)(a, b); }
LOX_OP Reg average16(Reg a, Reg b) { return LOX_MM(avg_epu16)(a, b); }
LOX_OP Reg multiply_add16(Reg a, Reg b) { return LOX_MM(madd_epi16)(a, b); }
// The same, added to 32-bit sums.
LOX_OP Reg multiply_add16_to(Reg sum, Reg a, Reg b) {
#if defined(__AVX512VNNI__)
  return LOX_MM(dpwssd_epi32)(sum, a, b);
#else
  return LOX_MM(add_epi32)(sum, LOX_MM(madd_epi16)(a, b));
#endif
}
// (a b + 2^14) >> 15, of which 2^15 wraps around.
LOX_OP Reg multiply_round16(Reg a, Reg b) { return LOX_MM(mulhrs_epi16)(a, b); }
LOX_OP Reg abs16(Reg v) { return LOX_MM(abs_epi16)(v); }
// The bits of numbers as floats.
LOX_OP Reg float_bits(Reg v) {
  return LOX_BITS(castps)(LOX_MM(cvtepi32_ps)(v));
}
LOX_OP Reg min_signed16(Reg a, Reg b) { return LOX_MM(min_epi16)(a, b); }
LOX_OP Reg min_unsigned16(Reg a, Reg b) { return LOX_MM(min_epu16)(a, b); }
LOX_OP Reg max_unsigned16(Reg a, Reg b) { return LOX_MM(max_epu16)(a, b); }
LOX_OP Reg sub_saturating_unsigned16(Reg a, Reg b) {
  return LOX_MM(subs_epu16)(a, b);
}
LOX_OP Reg max_signed16(Reg a, Reg b) { return LOX_MM(max_epi16)(a, b); }
template <int S>
LOX_OP Reg shift_right_signed32(Reg v) {
  return LOX_MM(srai_epi32)(v, S);
}
LOX_OP Reg pack_signed32(Reg a, Reg b) { return LOX_MM(packs_epi32)(a, b); }
LOX_OP Reg pack_unsigned32(Reg a, Reg b) { return LOX_MM(packus_epi32)(a, b); }
LOX_OP Reg sub32(Reg a, Reg b) { return LOX_MM(sub_epi32)(a, b); }
LOX_OP Reg multiply_low32(Reg a, Reg b) { return LOX_MM(mullo_epi32)(a, b); }
LOX_OP Reg min_signed32(Reg a, Reg b) { return LOX_MM(min_epi32)(a, b); }
LOX_OP Reg pack_signed16(Reg a, Reg b) { return LOX_MM(packs_epi16)(a, b); }
// 16 of the bytes of low and then high, from byte K on.
template <int K>
LOX_OP Reg bytes_from(Reg low, Reg high) {
  return LOX_MM(alignr_epi8)(high, low, K);
}

#undef LOX_MM
#undef LOX_BITS
