#include "store/NIniFileKeyMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "platform/NUnicode.h"
#include "store/NNameFilter.h"

namespace {

// What a table read from records must hold: the free names in the order
// they were first seen, each with its last value, and every personal name
// with its last value.
class Model {
 public:
  void Read(const std::string& name, std::uint32_t value) {
    if (NIniFileKeyMap::FixedIndex(name) < 0 && !values_.count(name)) order_.push_back(name);
    values_[name] = value;
  }
  const std::vector<std::string>& Order() const { return order_; }
  const std::map<std::string, std::uint32_t>& Values() const { return values_; }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& [name, value] : values_) names.push_back(name);
    return names;
  }

 private:
  std::vector<std::string> order_;
  std::map<std::string, std::uint32_t> values_;
};

// Appends a record of `name` to `text`, as `model` reads it.
void Add(std::string& text, Model& model, const std::string& name, std::uint32_t value) {
  char digits[9];
  std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(value));
  text += "D:\"" + name + "\"=" + digits + "\r\n";
  model.Read(name, value);
}

// `records` records over `pool` names of one family ("Name 0", "Name 1",
// ...), drawn at random so that some repeat, or all distinct when `pool` is
// 0; with a personal name now and then.
std::string Generate(std::mt19937& random, int records, int pool, Model* model) {
  std::string text;
  for (int i = 0; i < records; ++i) {
    std::string name;
    if (random() % 40 == 0) {
      name = std::string(NIniFileKeyMap::kFixedNames[random() % NIniFileKeyMap::kFixedCount]);
    } else {
      name = "Name " + std::to_string(pool == 0 ? static_cast<unsigned>(i) : random() % static_cast<unsigned>(pool));
    }
    Add(text, *model, name, static_cast<std::uint32_t>(random()));
  }
  return text;
}

// Looks every name up, narrow and wide in turn, in `names`' order, and a
// missing name of the same family between each.
void ExpectLookups(const NIniFileKeyMap& map, const Model& model, const std::vector<std::string>& names) {
  int turn = 0;
  for (const std::string& name : names) {
    const NIniFileKeyMap::Element* element =
        ++turn % 2 ? map.Find(std::string_view(name)) : map.Find(std::u16string_view(NUtf8ToUtf16(name)));
    ASSERT_NE(element, nullptr) << name;
    std::uint32_t value = 0;
    ASSERT_TRUE(element->Data() && element->Data()->GetDword(&value)) << name;
    ASSERT_EQ(value, model.Values().at(name)) << name;
    const std::string missing = "Name " + std::to_string(100000 + turn);
    ASSERT_EQ(map.Find(std::u16string_view(NUtf8ToUtf16(missing))), nullptr) << missing;
    ASSERT_EQ(map.Find(std::string_view(missing)), nullptr) << missing;
  }
}

void ExpectTable(const NIniFileKeyMap& map, const Model& model) {
  ASSERT_EQ(map.ElementCount(), NIniFileKeyMap::kFixedCount + model.Order().size());
  for (std::size_t i = 0; i < model.Order().size(); ++i) {
    ASSERT_EQ(map.ElementAt(NIniFileKeyMap::kFixedCount + i).Name(), model.Order()[i]) << i;
  }
  ASSERT_EQ(map.ValueCount(), model.Values().size());
}

TEST(NIniFileKeyMapTest, ReadTablesHoldTheFirstPlaceAndLastValueInEveryReadingOrder) {
  // Sizes around the batch the reader works in, pools from all distinct to
  // heavily repeated, and orders from the saved one to none at all: the
  // table answers alike however it found the names.
  std::mt19937 random(11);
  for (const int records : {1, 30, 255, 256, 257, 700, 3000}) {
    for (const int pool : {0, records * 4, records / 3 + 1}) {
      for (int order = 0; order < 3; ++order) {
        SCOPED_TRACE("records " + std::to_string(records) + ", pool " + std::to_string(pool) + ", order " +
                     std::to_string(order));
        Model model;
        NIniFileKeyMap map;
        const NIniFileKeyMap::ReadResult read = map.ReadRecords(map.AdoptText(Generate(random, records, pool, &model)));
        ASSERT_EQ(read.invalidLine, 0u) << read.problem;
        ExpectTable(map, model);
        std::vector<std::string> names = model.Names();
        if (order == 0) {
          // As saved: personal names first, then the others in their order.
          std::erase_if(names, [](const std::string& name) { return NIniFileKeyMap::FixedIndex(name) < 0; });
          names.insert(names.end(), model.Order().begin(), model.Order().end());
        } else if (order == 1) {
          std::reverse(names.begin(), names.end());
        } else {
          std::shuffle(names.begin(), names.end(), random);
        }
        ExpectLookups(map, model, names);
        ExpectLookups(map, model, names);  // again, from where the first pass left off
      }
    }
  }
}

TEST(NIniFileKeyMapTest, NamesSetOrReadLaterJoinTheTable) {
  for (const bool readFirst : {false, true}) {
    SCOPED_TRACE(readFirst ? "after reads" : "before any read");
    std::mt19937 random(5);
    Model model;
    NIniFileKeyMap map;
    map.ReadRecords(map.AdoptText(Generate(random, 400, 0, &model)));
    if (readFirst) ExpectLookups(map, model, model.Order());
    // A value set: a new name goes last, a known one keeps its place.
    map.Put("Set Later", new NIniFileDataDword(77), true, true, true);
    model.Read("Set Later", 77);
    const std::string known = model.Order()[model.Order().size() / 2];
    map.Put(known, new NIniFileDataDword(78), true, true, true);
    model.Read(known, 78);
    ExpectTable(map, model);
    // The private half: personal names, repeats of the first file and new
    // names.
    std::string second;
    Add(second, model, "Username", 1);
    Add(second, model, "Password V2", 2);
    for (int i = 0; i < 300; i += 3) Add(second, model, "Name " + std::to_string(i), 1000u + static_cast<unsigned>(i));
    for (int i = 0; i < 50; ++i) Add(second, model, "Private " + std::to_string(i), static_cast<std::uint32_t>(i));
    ASSERT_EQ(map.ReadRecords(map.AdoptText(second)).invalidLine, 0u);
    ExpectTable(map, model);
    ExpectLookups(map, model, model.Names());
  }
}

TEST(NIniFileKeyMapTest, AKeyWithoutAFileFindsNothingButWhatIsSet) {
  NIniFileKeyMap map;
  // Personal names always have their element; it holds data once set.
  const NIniFileKeyMap::Element* personal = map.Find(std::u16string_view(u"Username"));
  ASSERT_NE(personal, nullptr);
  EXPECT_EQ(personal->Data(), nullptr);
  EXPECT_EQ(map.Find(std::string_view("Anything")), nullptr);
  map.Put("Username", new NIniFileDataDword(1), true, true, true);
  map.Put("Anything", new NIniFileDataDword(2), true, true, true);
  EXPECT_EQ(map.Find(std::u16string_view(u"Username")), personal);
  EXPECT_TRUE(map.IsPersonal(*personal));
  EXPECT_NE(personal->Data(), nullptr);
  ASSERT_NE(map.Find(std::string_view("Anything")), nullptr);
  EXPECT_EQ(map.Find(std::string_view("anything")), nullptr);
}

// ---- The filter that tells most missing names apart without a lookup ------

// The share of `absent` hashes the filter wrongly reports present.
double FalsePositives(const NNameFilter& filter, const std::vector<std::uint64_t>& absent) {
  std::size_t wrong = 0;
  for (const std::uint64_t hash : absent) wrong += filter.MayHold(hash) ? 1 : 0;
  return static_cast<double>(wrong) / static_cast<double>(absent.size());
}

TEST(NNameFilterTest, HoldsWhatWasAddedAndReportsRepeats) {
  std::mt19937_64 random(7);
  std::vector<std::uint64_t> added(3000);
  for (auto& hash : added) hash = random();
  std::vector<std::uint64_t> words(NNameFilter::WordsFor(added.size()));
  ASSERT_GE(words.size() * 2, added.size());
  NNameFilter filter;
  filter.Reset(words.data(), words.size());
  std::size_t repeats = 0;
  for (const std::uint64_t hash : added) repeats += filter.Add(hash) ? 1 : 0;
  EXPECT_LT(repeats, added.size() / 50);  // false alarms only, and few
  for (const std::uint64_t hash : added) {
    ASSERT_TRUE(filter.MayHold(hash));
    ASSERT_TRUE(filter.Add(hash));
  }
  std::vector<std::uint64_t> absent(20000);
  for (auto& hash : absent) hash = random();
  EXPECT_LT(FalsePositives(filter, absent), 0.02);
  // Reset forgets everything.
  filter.Reset(words.data(), words.size());
  EXPECT_FALSE(filter.MayHold(added[0]));
  EXPECT_FALSE(filter.Add(added[0]));
}

TEST(NNameFilterTest, HashesThatDifferInFewBitsStayApart) {
  // Names of one family ("Color 1", "Color 2", ...) have hashes that share
  // most of their bits; the filter must not pile them onto a few words.
  for (const std::uint64_t step : {std::uint64_t{1}, std::uint64_t{64}, std::uint64_t{1} << 32}) {
    std::vector<std::uint64_t> words(NNameFilter::WordsFor(300));
    NNameFilter filter;
    filter.Reset(words.data(), words.size());
    for (std::uint64_t i = 0; i < 300; ++i) filter.Add(0x1234'5678'9abc'def0 + i * step);
    std::vector<std::uint64_t> absent;
    for (std::uint64_t i = 300; i < 10300; ++i) absent.push_back(0x1234'5678'9abc'def0 + i * step);
    EXPECT_LT(FalsePositives(filter, absent), 0.02) << "step " << step;
  }
}

}  // namespace
