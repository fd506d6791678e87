// SPDX-License-Identifier: Apache-2.0
//
// The table of conversions against the library's own answers.
#include <algorithm>
#include <sstream>

#include "orumlox/csc.h"
#include "tool_runner.h"

namespace tool {
namespace {

struct Format {
  int32_t code;
  const char *token;
};

constexpr Format kFormats[] = {
    {0, "yuv400"},     {1, "yuv420"},     {2, "yuv422n"},
    {3, "yuv444"},     {4, "yv12"},       {5, "yv16"},
    {6, "nv12"},       {7, "nv21"},       {8, "yuv422w"},
    {11, "t64x32"},    {12, "t16x16"},    {13, "t8x8"},
    {14, "t256x16"},   {100, "uyvy"},     {101, "yuyv"},
    {200, "rgb565"},   {201, "bgr565"},   {400, "rgb888"},
    {401, "bgr888"},   {500, "rgba8888"}, {501, "bgra8888"},
    {502, "argb8888"}, {503, "abgr8888"}, {600, "yuv420Planar16"},
    {601, "p010le"}};

// Planes with room for any layout; wide enough for t256x16.
class Planes {
 public:
  explicit Planes(int32_t format) : bytes_(4 * kPlane) {
    for (int p = 0; p < 4; ++p) {
      img.width[p] = 1344;
      img.height[p] = 64;
      img.stride[p] = 1344 * 4;
      img.buf_height[p] = 64;
      img.plane[p] = bytes_.data() + p * kPlane;
    }
    img.format = format;
  }

  vexo_img img = {};

 private:
  static constexpr size_t kPlane = 1344 * 4 * 80;
  std::vector<uint8_t> bytes_;
};

bool library_has(int32_t from, int32_t to) {
  Planes src(from);
  Planes dst(to);
  return vexo_csc(&src.img, &dst.img) == VEXO_OK;
}

class FormatsTest : public ToolTest {};

TEST_F(FormatsTest, AgreeWithTheLibrary) {
  std::string json = "{\n  \"std\": \"bt601\",\n  \"formats\": [\n";
  // A row of the table: code, token and a word for each column.
  std::vector<std::string> table;
  int pairs = 0;
  for (const Format &from : kFormats) {
    std::string list;
    std::string row = std::to_string(from.code) + " " + from.token;
    for (const Format &to : kFormats) {
      const bool yes = library_has(from.code, to.code);
      pairs += yes;
      row += yes ? " yes" : " -";
      if (yes) {
        list += list.empty() ? "\"" : ", \"";
        list += std::string(to.token) + "\"";
      }
    }
    table.push_back(row);
    json += "    {\"code\": " + std::to_string(from.code) + ", \"token\": \"" +
            from.token + "\", \"to\": [" + list + "]}" +
            (from.code == 601 ? "\n" : ",\n");
  }
  json += "  ]\n}\n";
  EXPECT_GT(pairs, 0);
  const Outcome as_json = vexo("formats --json");
  EXPECT_EQ(as_json.status, 0);
  EXPECT_EQ(as_json.out, json);

  const Outcome as_table = vexo("formats");
  EXPECT_EQ(as_table.status, 0);
  std::istringstream lines(as_table.out);
  size_t found = 0;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string joined;
    for (std::string word; words >> word;) {
      joined += (joined.empty() ? "" : " ") + word;
    }
    if (found < table.size() && joined == table[found]) ++found;
  }
  EXPECT_EQ(found, table.size()) << as_table.out;
  EXPECT_NE(as_table.out.find("\n" + std::to_string(pairs) + " pairs\n"),
            std::string::npos);
}

// Calls that succeed without writing anything are no conversions: of BT.709
// full range there is at most yuv420 to rgba8888.
TEST_F(FormatsTest, NothingWrittenIsNoConversion) {
  const Outcome outcome = vexo("formats --json --std bt709-full");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find("\"std\": \"bt709-full\""), std::string::npos);
  const size_t line = outcome.out.find("\"token\": \"yuv420\"");
  ASSERT_NE(line, std::string::npos);
  const std::string list =
      outcome.out.substr(line, outcome.out.find('\n', line) - line);
  for (const char *token : {"rgb565", "bgr565", "rgb888", "bgr888", "bgra8888",
                            "argb8888", "abgr8888"}) {
    EXPECT_EQ(list.find(std::string(1, '"') + token + '"'), std::string::npos)
        << list;
  }
}

}  // namespace
}  // namespace tool
