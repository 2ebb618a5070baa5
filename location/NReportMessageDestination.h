#pragma once

#include <cstdint>
#include <string_view>

#include "base/NArray.h"
#include "base/NUnicodeString.h"

class ILogEvent;
class NReportMessageParams;

// One entry of a destination's topic table.
struct UTopicEntry {
  std::uint32_t id = 0;
  NUnicodeString name;
};

// A named sink for log events with a table of topics. Every destination
// carries the standard topics 0 "Severe" and 2 "Informational". Not
// thread-safe by itself; file destinations serialise their writes.
class NReportMessageDestination {
 public:
  static constexpr std::uint32_t kTopicSevere = 0;
  static constexpr std::uint32_t kTopicInformational = 2;

  explicit NReportMessageDestination(NUnicodeString sourceName);
  NReportMessageDestination(const NReportMessageDestination&) = delete;
  NReportMessageDestination& operator=(const NReportMessageDestination&) = delete;
  virtual ~NReportMessageDestination();

  // The text written as the log's source field.
  const NUnicodeString& GetSourceName() const { return m_sourceName; }

  // Adds a topic unless its identifier is present; false when it was.
  bool AddTopic(std::uint32_t id, std::u16string_view name);
  bool HasTopic(std::uint32_t id) const;
  // The topic's name, or "Unknown" when the table does not hold it.
  NUnicodeString GetTopicName(std::uint32_t id) const;
  // The table; indexing it outside its bounds throws OutOfRange.
  const NArray<UTopicEntry>& GetTopics() const { return m_topics; }

  // Writes one event. On failure fills `params` and returns false.
  virtual bool WriteEvent(const ILogEvent& event, NReportMessageParams& params) = 0;

 private:
  NUnicodeString m_sourceName;
  NArray<UTopicEntry> m_topics;
};
