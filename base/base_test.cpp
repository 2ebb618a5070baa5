#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/NArray.h"
#include "base/NMap.h"
#include "base/NUnicodeString.h"
#include "base/NUnknown.h"
#include "base/NUnknownPointer.h"
#include "base/OutOfRange.h"

namespace {

// Counts its destructions, so that a double or missing delete shows.
class Counted : public NUnknown {
 public:
  explicit Counted(int* deletions) : m_deletions(deletions) {}
  std::uint32_t References() {  // the count once this call's reference is dropped
    AddRef();
    return Release();
  }

 protected:
  void DeleteThis() override {
    ++*m_deletions;
    delete this;
  }

 private:
  int* m_deletions;
};

template <typename Array>
void ExpectOutOfRange(Array& array, std::size_t index, std::size_t count) {
  try {
    (void)array[index];
    ADD_FAILURE() << "index " << index << " did not throw";
  } catch (const OutOfRange& e) {
    EXPECT_EQ(e.Index(), index);
    EXPECT_EQ(e.Count(), count);
  }
}

TEST(NArrayTest, IndexOutsideTheArrayThrowsOutOfRangeWithIndexAndCount) {
  NArray<int> empty;
  ExpectOutOfRange(empty, 0, 0);
  ExpectOutOfRange(std::as_const(empty), 0, 0);
  NArray<int> array = {10, 20, 30};
  ExpectOutOfRange(array, 3, 3);
  ExpectOutOfRange(std::as_const(array), 3, 3);
  ExpectOutOfRange(array, static_cast<std::size_t>(-1), 3);
  EXPECT_THROW(array.RemoveAt(3), OutOfRange);
  EXPECT_EQ(array, (NArray<int>{10, 20, 30})) << "a refused RemoveAt changed the array";
  array.RemoveAt(0);
  EXPECT_EQ(array[0], 20);
  EXPECT_EQ(array[1], 30);
  ExpectOutOfRange(array, 2, 2);
  EXPECT_THROW(array.RemoveAt(2), std::out_of_range) << "catchable as the standard exception";
}

TEST(NUnicodeStringTest, ConvertsFromAndToUtf8) {
  const NUnicodeString text = NUnicodeString::FromUtf8("K\xC3\xB6nig \xF0\x9F\x98\x80");
  EXPECT_EQ(text, u"K\u00F6nig \U0001F600");
  EXPECT_EQ(text.ToUtf8(), "K\xC3\xB6nig \xF0\x9F\x98\x80");
  EXPECT_EQ(NUnicodeString::FromUtf8("a\xC0z"), u"a\uFFFDz");
  // ASCII is widened in blocks that overlap at the end: every length must
  // come out whole, and one byte that is not ASCII, wherever it is, must
  // still send the text to the decoder.
  for (std::size_t length = 0; length < 40; ++length) {
    std::string ascii;
    std::u16string wide;
    for (std::size_t i = 0; i < length; ++i) {
      ascii.push_back(static_cast<char>('a' + i % 26));
      wide.push_back(static_cast<char16_t>(u'a' + i % 26));
    }
    EXPECT_EQ(NUnicodeString::FromUtf8(ascii), wide) << length;
    for (std::size_t at = 0; at < length; ++at) {
      std::string utf8 = ascii;
      utf8.replace(at, 1, "\xC3\xB6");
      std::u16string expected = wide;
      expected[at] = u'\u00F6';
      ASSERT_EQ(NUnicodeString::FromUtf8(utf8), expected) << length << " " << at;
    }
  }
}

TEST(NUnicodeStringTest, IgnoreCaseEqualityAndHashAgree) {
  enum class Equal { kYes, kNo, kBySystem };
  const struct {
    std::u16string_view a, b;
    Equal equal;
  } cases[] = {
      {u"Section", u"SECTION", Equal::kYes},
      {u"\u00C9T\u00C9", u"\u00E9t\u00E9", Equal::kYes},
      {u"\u039F\u0394\u039F\u03A3", u"\u03BF\u03B4\u03BF\u03C3", Equal::kYes},  // ΟΔΟΣ / οδοσ
      {u"\u041C\u0418\u0420", u"\u043C\u0438\u0440", Equal::kYes},              // МИР / мир
      // Final sigma: simple case folding makes it σ, while Windows' ordinal
      // rule (its file names' rule) has no upper case for it. Either way the
      // hash must follow the equality.
      {u"\u039F\u0394\u039F\u03A3", u"\u03BF\u03B4\u03BF\u03C2", Equal::kBySystem},  // ΟΔΟΣ / οδος
      {u"abc", u"abcd", Equal::kNo}, {u"abcd", u"abc", Equal::kNo}, {u"abc", u"abd", Equal::kNo},
      {u"e", u"\u00E9", Equal::kNo},
  };
  const NIgnoreCaseHash hash;
  for (const auto& c : cases) {
    SCOPED_TRACE(NUnicodeString(std::u16string(c.a)).ToUtf8() + " / " + NUnicodeString(std::u16string(c.b)).ToUtf8());
    const bool equal = NIgnoreCaseEqual()(c.a, c.b);
    if (c.equal != Equal::kBySystem) {
      EXPECT_EQ(equal, c.equal == Equal::kYes);
    }
    EXPECT_EQ(NUnicodeString(std::u16string(c.a)).EqualsIgnoreCase(c.b), equal);
    EXPECT_EQ(NIgnoreCaseEqual()(c.b, c.a), equal);
    if (equal) {
      EXPECT_EQ(hash(c.a), hash(c.b));
    }
  }
  NMap<NUnicodeString, int, NIgnoreCaseHash, NIgnoreCaseEqual> map;
  map.emplace(u"\u00C9t\u00E9", 1);
  ASSERT_NE(map.Find(NUnicodeString(u"\u00E9T\u00C9")), nullptr);
  EXPECT_EQ(*map.Find(NUnicodeString(u"\u00E9T\u00C9")), 1);
  EXPECT_EQ(map.Find(NUnicodeString(u"ete")), nullptr);
  EXPECT_EQ(map.size(), 1u) << "Find inserted";
}

TEST(NUnknownTest, QueryInterfaceAddsAReferenceOnlyOnSuccessAndTheLastReleaseDeletesOnce) {
  int deletions = 0;
  auto* object = new Counted(&deletions);
  constexpr NInterfaceId kOther = {0x12345678, 0x1234, 0x5678, {1, 2, 3, 4, 5, 6, 7, 8}};
  void* result = object;
  EXPECT_FALSE(object->QueryInterface(kOther, &result));
  EXPECT_EQ(result, nullptr);
  EXPECT_EQ(object->References(), 1u);
  EXPECT_TRUE(object->QueryInterface(NUnknown::kIID, &result));
  EXPECT_EQ(result, static_cast<NUnknown*>(object));
  EXPECT_EQ(object->AddRef(), 3u);
  EXPECT_EQ(object->Release(), 2u);
  EXPECT_EQ(static_cast<NUnknown*>(result)->Release(), 1u);
  EXPECT_EQ(deletions, 0);
  EXPECT_EQ(object->Release(), 0u);
  EXPECT_EQ(deletions, 1);
}

TEST(NUnknownTest, ReferencesFromSeveralThreadsStayBalanced) {
  int deletions = 0;
  auto* object = new Counted(&deletions);
  std::atomic<bool> reachedZero{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 20000; ++i) {
        object->AddRef();
        if (object->Release() == 0) reachedZero = true;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(reachedZero);
  EXPECT_EQ(object->References(), 1u);
  object->Release();
  EXPECT_EQ(deletions, 1);
}

TEST(NUnknownPointerTest, CopyMoveAdoptShareAndResetKeepTheCountRight) {
  int deletions = 0;
  auto* object = new Counted(&deletions);
  {
    auto owner = NUnknownPointer<Counted>::Adopt(object);
    EXPECT_EQ(object->References(), 1u) << "Adopt added a reference";
    NUnknownPointer<Counted> copy = owner;
    EXPECT_EQ(object->References(), 2u);
    NUnknownPointer<Counted> moved = std::move(copy);
    EXPECT_FALSE(copy);
    EXPECT_EQ(moved.Get(), object);
    EXPECT_EQ(object->References(), 2u);
    NUnknownPointer<Counted> assigned;
    assigned = owner;
    EXPECT_EQ(object->References(), 3u);
    const NUnknownPointer<Counted>& itself = assigned;
    assigned = itself;
    EXPECT_EQ(object->References(), 3u) << "self-assignment";
    assigned = std::move(moved);
    EXPECT_EQ(object->References(), 2u) << "move-assignment over the same object";
    auto shared = NUnknownPointer<Counted>::Share(object);
    EXPECT_EQ(object->References(), 3u);
    shared.Reset();
    EXPECT_FALSE(shared);
    EXPECT_EQ(object->References(), 2u);
    shared.Reset();
    EXPECT_EQ(object->References(), 2u) << "a second Reset released again";
    Counted* detached = assigned.Detach();
    EXPECT_EQ(object->References(), 2u);
    detached->Release();
    EXPECT_EQ(deletions, 0);
  }
  EXPECT_EQ(deletions, 1);
}

}  // namespace
