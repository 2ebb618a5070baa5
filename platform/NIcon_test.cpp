#include "platform/NIcon.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/testing/NTestFiles.h"

namespace {

constexpr int kStatusIconIds[] = {kConnectedIconId, kDisconnectedIconId, kNewInputIconId, kLockedIconId};

std::uint32_t Read16(std::string_view bytes, std::size_t offset) {
  return static_cast<unsigned char>(bytes.at(offset)) | static_cast<unsigned char>(bytes.at(offset + 1)) << 8;
}

std::uint32_t Read32(std::string_view bytes, std::size_t offset) {
  return Read16(bytes, offset) | Read16(bytes, offset + 2) << 16;
}

void Put32(std::string* bytes, std::size_t offset, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) (*bytes)[offset + i] = static_cast<char>(value >> (8 * i) & 0xFF);
}

// An icon file with one zero-filled image per width, in the order given.
std::string IconFile(const std::vector<int>& widths) {
  std::string file(6 + 16 * widths.size(), '\0');
  file[2] = 1;
  file[4] = static_cast<char>(widths.size());
  for (std::size_t i = 0; i < widths.size(); ++i) {
    const std::size_t entry = 6 + 16 * i;
    file[entry] = static_cast<char>(widths[i] & 0xFF);  // 256 is written as 0
    Put32(&file, entry + 8, 40);
    Put32(&file, entry + 12, static_cast<std::uint32_t>(file.size()));
    std::string image(40, '\0');
    image[4] = static_cast<char>(widths[i] & 0xFF);
    image[5] = static_cast<char>(widths[i] >> 8);
    file += image;
  }
  return file;
}

// The width an image of IconFile() says it has.
int WidthOf(std::string_view image) { return image.size() < 8 ? -1 : static_cast<int>(Read32(image, 4)); }

TEST(NLibraryIcons, AreTheFourStatusIconFilesInOrderEachWithA16PixelImage) {
  std::vector<int> ids;
  for (const NLibraryIcon& icon : NLibraryIcons()) ids.push_back(icon.resourceId);
  EXPECT_EQ(ids, std::vector<int>(std::begin(kStatusIconIds), std::end(kStatusIconIds)));
  const char* files[] = {"status_connected.ico", "status_disconnected.ico", "status_new_input.ico",
                         "status_locked.ico"};
  for (std::size_t i = 0; i < std::size(files); ++i) {
    SCOPED_TRACE(files[i]);
    const std::string onDisk = NReadFileBytes(std::string(CFGDECK_ICON_FOLDER) + "/" + files[i]);
    ASSERT_FALSE(onDisk.empty());
    const std::string_view bytes = NLibraryIconBytes(kStatusIconIds[i]);
    EXPECT_EQ(bytes, onDisk);
    ASSERT_GE(bytes.size(), 6u + 16u);
    EXPECT_EQ(Read16(bytes, 0), 0u);  // reserved
    EXPECT_EQ(Read16(bytes, 2), 1u);  // an icon, not a cursor
    EXPECT_GE(Read16(bytes, 4), 1u);
    // A 32-bit bitmap image: BITMAPINFOHEADER with the doubled height that
    // holds the AND mask.
    const std::string_view image = NIconImage(bytes, 16);
    ASSERT_GE(image.size(), 40u);
    EXPECT_EQ(Read32(image, 0), 40u);
    EXPECT_EQ(Read32(image, 4), 16u);
    EXPECT_EQ(Read32(image, 8), 32u);
    EXPECT_EQ(Read16(image, 14), 32u);
    EXPECT_EQ(image.size(), 40u + 16 * 16 * 4 + 16 * 4);
  }
}

TEST(NLibraryIcons, EveryIdLoadsToItsOwnHandleAgainAndAgainAndUnknownIdsToNone) {
  std::set<NIconHandle> handles;
  for (const int id : kStatusIconIds) {
    SCOPED_TRACE(id);
    const NIconHandle first = NLoadLibraryIcon(id);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(NLoadLibraryIcon(id), first);
    handles.insert(first);
  }
  EXPECT_EQ(handles.size(), std::size(kStatusIconIds));
  for (const int id : {0, 1, -1, 5017, 5022, 5018 + 65536, -5018}) {
    SCOPED_TRACE(id);
    EXPECT_TRUE(NLibraryIconBytes(id).empty());
    EXPECT_EQ(NLoadLibraryIcon(id), nullptr);
  }
}

TEST(NIconImage, ChoosesTheExactWidthElseTheNearestWiderElseTheWidest) {
  const struct {
    std::vector<int> widths;
    int wanted, chosen;
  } rows[] = {
      {{32, 16, 48}, 16, 16}, {{32, 16, 48}, 32, 32}, {{32, 16, 48}, 48, 48}, {{32, 16, 48}, 20, 32},
      {{32, 16, 48}, 8, 16},  {{32, 16, 48}, 64, 48}, {{16, 32}, 24, 32},     {{24}, 16, 24},
      {{256, 16}, 256, 256},  {{256, 16}, 100, 256},  // 256 is written as 0
  };
  for (const auto& row : rows) {
    EXPECT_EQ(WidthOf(NIconImage(IconFile(row.widths), row.wanted)), row.chosen)
        << row.wanted << " of " << testing::PrintToString(row.widths);
  }
}

TEST(NIconImage, RefusesWhatIsNoWellFormedIconFile) {
  const std::string good = IconFile({16, 32});
  ASSERT_FALSE(NIconImage(good, 16).empty());
  const struct {
    const char* what;
    std::function<void(std::string*)> damage;
  } rows[] = {
      {"empty", [](std::string* f) { f->clear(); }},
      {"header cut", [](std::string* f) { f->resize(5); }},
      {"second entry cut", [](std::string* f) { f->resize(6 + 16); }},
      {"last image cut", [](std::string* f) { f->pop_back(); }},
      {"reserved word", [](std::string* f) { (*f)[0] = 1; }},
      {"a cursor", [](std::string* f) { (*f)[2] = 2; }},
      {"no images", [](std::string* f) { (*f)[4] = 0; }},
      {"offset far beyond the end, in an image not chosen", [](std::string* f) { Put32(f, 6 + 16 + 12, 0xFFFFFFF0); }},
      {"size wrapping around", [](std::string* f) { Put32(f, 6 + 8, 0xFFFFFFFF); }},
      {"empty image", [](std::string* f) { Put32(f, 6 + 8, 0); }},
  };
  for (const auto& row : rows) {
    std::string damaged = good;
    row.damage(&damaged);
    EXPECT_TRUE(NIconImage(damaged, 16).empty()) << row.what;
  }
}

}  // namespace
