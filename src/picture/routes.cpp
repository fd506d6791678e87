// SPDX-License-Identifier: Apache-2.0
//
// The graph of conversions: those that the tables of csc.h have, for each
// standard, and the steps of the picture layer. Chains are found by relaxing
// all edges until nothing gets cheaper.
#include "picture/routes.h"

#include "dither/depth.h"
#include "orumlox/csc_new.h"
#include "orumlox/picture.h"
#include "picture/formats.h"

namespace lox {

namespace {

constexpr int32_t kStandards[] = {VEXO_STD_DEFAULT, VEXO_STD_BT601_FULL,
                                  VEXO_STD_BT709,   VEXO_STD_BT709_FULL,
                                  VEXO_STD_BT2020,  VEXO_STD_BT2020_FULL};
constexpr int kStandardCount = 6;
static_assert(kPlaces == kFormats * kStandardCount);

constexpr int32_t kPass = 1;
constexpr int32_t kRounding = kLeastLoss;        // between YUV and RGB
constexpr int32_t kHalfChroma = 4 * kLeastLoss;  // every other sample of chroma
static_assert(kMostConversions < kLeastLoss);

// Drivers of csc.h where no route of it names them. The other order of pairs
// stands for the other order of planes.
constexpr Route kMoreRoutes[] = {
    {VEXO_FMT_YV12, VEXO_FMT_NV12, planes_to_pairs, kCrossed, kNothing},
    {VEXO_FMT_YV12, VEXO_FMT_NV21, planes_to_pairs, kInOrder, kNothing},
};
// BT.709 of full range, which is not what vexo_csc makes of it.
constexpr Route kBt709Full = {VEXO_FMT_YUV420, VEXO_FMT_RGBA8888,
                              bt709_full_to_rgb, kExactYuv420, kRgba8888};

struct OwnStep {
  int32_t src_format, dst_format;
  Step *step;
};

// They keep the standard.
constexpr OwnStep kSteps[] = {
    {VEXO_FMT_YUV420, VEXO_FMT_YV12, swap_chroma_planes},
    {VEXO_FMT_YV12, VEXO_FMT_YUV420, swap_chroma_planes},
    {VEXO_FMT_YUV422N, VEXO_FMT_YV16, swap_chroma_planes},
    {VEXO_FMT_YV16, VEXO_FMT_YUV422N, swap_chroma_planes},
    {VEXO_FMT_NV12, VEXO_FMT_NV21, swap_chroma_bytes},
    {VEXO_FMT_NV21, VEXO_FMT_NV12, swap_chroma_bytes},
    {VEXO_FMT_UYVY, VEXO_FMT_YUV422N, unpack_422},
    {VEXO_FMT_YUYV, VEXO_FMT_YUV422N, unpack_422},
    {VEXO_FMT_YUV422N, VEXO_FMT_UYVY, pack_422},
    {VEXO_FMT_YUV422N, VEXO_FMT_YUYV, pack_422},
    {VEXO_FMT_YUV420, VEXO_FMT_YUV422W, repeat_columns},
    {VEXO_FMT_YUV422N, VEXO_FMT_YUV444, repeat_columns},
    {VEXO_FMT_YUV422W, VEXO_FMT_YUV420, drop_columns},
    {VEXO_FMT_YUV444, VEXO_FMT_YUV422N, drop_columns},
    {VEXO_FMT_YUV422W, VEXO_FMT_YUV444, repeat_rows},
    {VEXO_FMT_P010LE, VEXO_FMT_YUV420PLANAR16, move_words},
    {VEXO_FMT_YUV420PLANAR16, VEXO_FMT_P010LE, move_words},
};

// What 16-bit samples become of 8 bits.
constexpr int32_t kBytes420[] = {VEXO_FMT_YUV420, VEXO_FMT_YV12, VEXO_FMT_NV12,
                                 VEXO_FMT_NV21};
constexpr int32_t kWords420[] = {VEXO_FMT_YUV420PLANAR16, VEXO_FMT_P010LE};

// Whether a step stands for a route that is not right for any stride.
bool is_replaced(const Route &route) {
  for (const OwnStep &own : kSteps) {
    if (own.src_format == route.src_format &&
        own.dst_format == route.dst_format) {
      return true;
    }
  }
  return false;
}

int standard_index(int32_t standard) {
  for (int i = 0; i < kStandardCount; ++i) {
    if (kStandards[i] == standard) return i;
  }
  return -1;
}

constexpr bool is_rgb24(int32_t format) {
  return format >= VEXO_FMT_RGB888 && format <= VEXO_FMT_ABGR8888;
}
constexpr bool is_rgb16(int32_t format) {
  return format == VEXO_FMT_RGB565 || format == VEXO_FMT_BGR565;
}

// How many times the samples of chroma are halved.
int32_t chroma_halvings(int32_t format) {
  switch (format) {
    case VEXO_FMT_YUV422N:
    case VEXO_FMT_YUV422W:
    case VEXO_FMT_YV16:
    case VEXO_FMT_UYVY:
    case VEXO_FMT_YUYV:
      return 1;
    default:
      return has_standard(format) && format != VEXO_FMT_YUV444 ? 2 : 0;
  }
}

// What a sample keeps of its bits.
int32_t bits_of(int32_t format) {
  if (is_rgb16(format)) return 5;
  return is_10_bit(format) || format >= VEXO_FMT_RGBA1010102 ? 10 : 8;
}

int32_t cost_of(int32_t from, int32_t to) {
  int32_t cost = kPass;
  if (has_standard(from) != has_standard(to) && from != VEXO_FMT_YUV400) {
    cost += kRounding;
  }
  if (from == VEXO_FMT_YUV400 && has_standard(to)) cost += kRounding;
  const int32_t halved = chroma_halvings(to) - chroma_halvings(from);
  if (halved > 0) cost += kHalfChroma * halved;
  if (bits_of(to) < bits_of(from)) cost += kFewerBits;
  return cost;
}

// Whether a call of csc.h makes another layout of YUV of it.
bool leads_to_yuv(int32_t format) {
  for (const Route &route : csc_routes(VEXO_STD_DEFAULT)) {
    if (route.src_format == format && has_standard(route.dst_format)) {
      return true;
    }
  }
  return !is_tiled(format);
}

// Whether vexo_csc_new is wanted though nobody asked for interpolation: where
// nothing else leads, with chroma of every pixel's own, and from ten bits to as
// many.
bool wants_new(int32_t from, int32_t standard, int32_t to) {
  const bool deep = to >= VEXO_FMT_RGBA1010102;
  return (is_10_bit(from) && deep) ||
         (from == VEXO_FMT_YUV444 && (deep || standard == VEXO_STD_BT2020 ||
                                      standard == VEXO_STD_BT2020_FULL));
}

template <class Visit>
void for_each_new(const Manner &manner, Visit visit) {
  const int32_t siting = manner.chroma == VEXO_CHROMA_CENTRE
                             ? VEXO_SITING_CENTRE
                             : VEXO_SITING_LEFT;
  const bool always = manner.chroma != VEXO_CHROMA_AS_IT_IS;
  for (const Format &from : kFormatTable) {
    const bool may =
        always || is_10_bit(from.code) || from.code == VEXO_FMT_YUV444;
    if (!may || !has_standard(from.code)) continue;
    for (const Format &to : kFormatTable) {
      if (has_standard(to.code) || (manner.dithers && is_rgb16(to.code)) ||
          vexo_csc_new_supports(from.code, to.code, VEXO_STD_DEFAULT) == 0) {
        continue;
      }
      for (const int32_t standard : kStandards) {
        if (always || wants_new(from.code, standard, to.code)) {
          const int32_t own =
              from.code == VEXO_FMT_YUV444 ? kEveryPixelsOwn : siting;
          visit(Content{from.code, standard},
                Conversion{nullptr, nullptr, own, {to.code, 0}});
        }
      }
    }
  }
}

// Calls visit(from, conversion) for every edge, always in the same order.
// vexo_csc_new comes last: of equal costs a call of csc.h is taken.
template <class Visit>
void for_each_edge(const Manner &manner, Visit visit) {
  const bool repeats = manner.chroma == VEXO_CHROMA_AS_IT_IS && !manner.turned;
  const auto visit_route = [&](const Route &route, int32_t standard) {
    const bool to_rgb =
        has_standard(route.src_format) && !has_standard(route.dst_format);
    if (!repeats && to_rgb && leads_to_yuv(route.src_format)) return;
    visit(
        content_of(route.src_format, standard),
        Conversion{&route, nullptr, 0, content_of(route.dst_format, standard)});
  };
  const auto visit_step = [&](int32_t from, Step *step, int32_t to,
                              int32_t standard) {
    visit(Content{from, standard},
          Conversion{nullptr, step, 0, {to, standard}});
  };
  for (const int32_t standard : kStandards) {
    for (const Route &route : csc_routes(standard)) {
      if (has_standard(route.src_format) && has_standard(route.dst_format)) {
        // Between layouts of YUV a standard changes nothing.
        const bool loses = is_10_bit(route.src_format);
        if (is_replaced(route) || (loses && manner.dithers)) continue;
        for (const int32_t kept : kStandards) visit_route(route, kept);
      } else {
        const bool loses = is_rgb16(route.dst_format);
        if (loses && manner.dithers && !is_rgb16(route.src_format)) continue;
        visit_route(standard == VEXO_STD_BT709_FULL ? kBt709Full : route,
                    standard);
      }
    }
    for (const Route &route : kMoreRoutes) visit_route(route, standard);
    for (const OwnStep &own : kSteps) {
      visit_step(own.src_format, own.step, own.dst_format, standard);
    }
    for (const int32_t from : kWords420) {
      for (const int32_t to : kBytes420) {
        visit_step(from, manner.dithers ? dither_words : round_words, to,
                   standard);
      }
    }
  }
  if (manner.dithers) {
    for (const Route &route : dithered_routes()) {
      visit_route(route, VEXO_STD_DEFAULT);
    }
  }
  visit_step(VEXO_FMT_RGB565, exchange_fields, VEXO_FMT_BGR565, 0);
  visit_step(VEXO_FMT_BGR565, exchange_fields, VEXO_FMT_RGB565, 0);
  for (const Format &from : kFormatTable) {
    for (const Format &to : kFormatTable) {
      if (!is_rgb24(from.code) || !is_rgb24(to.code) || &from == &to) continue;
      visit_step(from.code, reorder_pixels, to.code, 0);
    }
  }
  visit_step(VEXO_FMT_RGBA8888, widen_pixels, VEXO_FMT_RGBA1010102, 0);
  visit_step(VEXO_FMT_RGBA8888, widen_pixels, VEXO_FMT_RGBAF16, 0);
  if (!manner.turned) for_each_new(manner, visit);
}

int32_t cost_of(const Content &from, const Conversion &conversion) {
  return cost_of(from.format, conversion.to.format);
}

// The edges as a search goes over them again and again, in their order.
struct Edge {
  uint8_t from, to;
  int16_t cost;
};
static_assert(kPlaces <= 256);

struct Graph {
  // More than there are in any manner, with room for some more formats.
  static constexpr int32_t kMostEdges = 1536;
  int32_t count = 0;
  Edge edge[kMostEdges];

  explicit Graph(const Manner &manner) {
    for_each_edge(manner, [&](const Content &from, const Conversion &edge_on) {
      if (count == kMostEdges) return;
      edge[count++] = {static_cast<uint8_t>(place_of(from)),
                       static_cast<uint8_t>(place_of(edge_on.to)),
                       static_cast<int16_t>(cost_of(from, edge_on))};
    });
  }
};

struct Search {
  Costs costs;
  // By place the edge that is last on the way there.
  int16_t last[kPlaces];
};

void search(const Graph &graph, int32_t start, bool backwards, Search *s) {
  for (int32_t &cost : s->costs.of) cost = kNoWay;
  s->costs.of[start] = 0;
  bool cheaper = true;
  while (cheaper) {
    cheaper = false;
    for (int32_t i = 0; i < graph.count; ++i) {
      const Edge &edge = graph.edge[i];
      const int here = backwards ? edge.to : edge.from;
      const int there = backwards ? edge.from : edge.to;
      if (s->costs.of[here] == kNoWay) continue;
      const int32_t cost = s->costs.of[here] + edge.cost;
      if (cost >= s->costs.of[there]) continue;
      s->costs.of[there] = cost;
      s->last[there] = static_cast<int16_t>(i);
      cheaper = true;
    }
  }
}

Costs costs_of(const Content &content, const Manner &manner, bool backwards) {
  Search s;
  search(Graph(manner), place_of(content), backwards, &s);
  return s.costs;
}

}  // namespace

int32_t place_of(const Content &content) {
  const Format *const format = find_format(content.format);
  const int standard = standard_index(content.standard);
  if (format == nullptr || standard < 0) return -1;
  return static_cast<int32_t>(format - kFormatTable) * kStandardCount +
         standard;
}

Content content_at(int32_t place) {
  return {kFormatTable[place / kStandardCount].code,
          kStandards[place % kStandardCount]};
}

Costs costs_from(const Content &from, const Manner &manner) {
  return costs_of(from, manner, false);
}

Costs costs_to(const Content &to, const Manner &manner) {
  return costs_of(to, manner, true);
}

Chain find_chain(const Content &from, const Content &to, const Manner &manner) {
  Chain chain;
  if (from == to) return chain;
  chain.cost = kNoWay;
  const int32_t start = place_of(from);
  int32_t place = place_of(to);
  if (start < 0 || place < 0) return chain;
  // A single conversion loses no more than any chain.
  for_each_edge(manner, [&](const Content &edge_from, const Conversion &edge) {
    if (chain.cost != kNoWay || edge_from != from || edge.to != to) return;
    chain = {cost_of(from, edge), 1, {edge}};
  });
  if (chain.cost != kNoWay) return chain;
  const Graph graph(manner);
  Search s;
  search(graph, start, false, &s);
  if (s.costs.of[place] == kNoWay) return chain;
  const auto before = [&](int32_t at) { return graph.edge[s.last[at]].from; };
  int32_t count = 0;
  for (int32_t at = place; at != start; at = before(at)) ++count;
  if (count > kMostConversions) return chain;
  chain.cost = s.costs.of[place];
  chain.count = count;
  int32_t edges[kMostConversions];
  for (; place != start; place = before(place)) edges[--count] = s.last[place];
  int32_t at = 0;
  for_each_edge(manner, [&](const Content &, const Conversion &edge) {
    for (int32_t i = 0; i < chain.count; ++i) {
      if (edges[i] == at) chain.conversion[i] = edge;
    }
    ++at;
  });
  return chain;
}

bool wants_even(const Conversion &conversion, const Content &from,
                int32_t width, int32_t height) {
  if (conversion.route == nullptr || (width % 2 == 0 && height % 2 == 0)) {
    return false;
  }
  const int32_t src = from.format;
  const int32_t dst = conversion.to.format;
  if (is_tiled(src) || is_tiled(dst)) return true;
  const bool halved = chroma_halvings(src) == 2;
  if (!has_standard(dst)) {
    // The kernels of the default standard shift rows of an odd height but for
    // widths in fours, and convert a last pixel with its neighbour.
    return has_standard(src) && halved && from.standard == VEXO_STD_DEFAULT &&
           width % 4 != 0;
  }
  // Whole blocks only.
  if (!has_standard(src)) return chroma_halvings(dst) != 0;
  // Rows of chroma in pairs.
  return height % 2 != 0 && src != VEXO_FMT_YUYV &&
         (chroma_halvings(dst) == 1 ||
          (chroma_halvings(src) == 1 && chroma_halvings(dst) == 2));
}

}  // namespace lox
