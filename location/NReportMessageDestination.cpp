#include "location/NReportMessageDestination.h"

#include <algorithm>

NReportMessageDestination::NReportMessageDestination(NUnicodeString sourceName)
    : m_sourceName(std::move(sourceName)) {
  AddTopic(kTopicSevere, u"Severe");
  AddTopic(kTopicInformational, u"Informational");
}

NReportMessageDestination::~NReportMessageDestination() = default;

bool NReportMessageDestination::AddTopic(std::uint32_t id, std::u16string_view name) {
  if (HasTopic(id)) return false;
  m_topics.Add(UTopicEntry{id, NUnicodeString(name)});
  return true;
}

bool NReportMessageDestination::HasTopic(std::uint32_t id) const {
  return std::any_of(m_topics.begin(), m_topics.end(), [id](const UTopicEntry& t) { return t.id == id; });
}

NUnicodeString NReportMessageDestination::GetTopicName(std::uint32_t id) const {
  for (const UTopicEntry& topic : m_topics) {
    if (topic.id == id) return topic.name;
  }
  return NUnicodeString(u"Unknown");
}
