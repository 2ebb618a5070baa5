#include "location/NFileDestination.h"

#include "location/ILogEvent.h"
#include "location/NReportMessageParams.h"
#include "location/NStatusReport.h"
#include "location/NUtcTime.h"
#include "platform/NPlatform.h"
#include "platform/NUnicode.h"

NFileDestination::NFileDestination(NUnicodeString sourceName, NUnicodeString folder, NUnicodeString prefix)
    : NFileDestination(std::move(sourceName), std::move(folder), std::move(prefix), NPlatform::Default()) {}

NFileDestination::NFileDestination(NUnicodeString sourceName, NUnicodeString folder, NUnicodeString prefix,
                                   NPlatform& platform)
    : NReportMessageDestination(std::move(sourceName)),
      m_folder(std::move(folder)),
      m_prefix(std::move(prefix)),
      m_platform(platform) {}

NFileDestination::~NFileDestination() = default;

NUnicodeString NFileDestination::FilePathFor(std::uint64_t fileTime) const {
  NUnicodeString path = m_folder;
  if (!path.empty() && path.back() != u'/' && path.back() != u'\\') path.push_back(m_platform.PathSeparator());
  path += m_prefix;
  path += NUtcTime::FromFileTime(fileTime).CompactDate();
  path += u".log";
  return path;
}

bool NFileDestination::OpenFor(const NUnicodeString& path, NReportMessageParams& params) {
  m_file.reset();
  m_filePath.clear();
  if (NStatus status = m_platform.CreateFolderChain(m_folder); !status) {
    NReportStatus(status, params);
    return false;
  }
  NOpenOptions options;
  options.mode = NOpenMode::kCreateIfMissing;
  options.access = NFileAccess::kReadWrite;
  std::unique_ptr<NFile> file;
  NFileInfo info;
  NStatus status = m_platform.OpenFile(path, options, &file);
  if (status) status = file->GetInfo(&info);
  if (!status) {
    NReportStatus(status, params);
    return false;
  }
  m_file = std::move(file);
  m_filePath = path;
  m_fileSize = info.size;
  return true;
}

bool NFileDestination::WriteEvent(const ILogEvent& event, NReportMessageParams& params) {
  const std::uint64_t now = m_platform.CurrentFileTime();
  const NUnicodeString path = FilePathFor(event.GetTime() != 0 ? event.GetTime() : now);
  std::string bytes;
  const std::u16string line = FormatLine(event);

  std::lock_guard<std::mutex> lock(m_mutex);
  if (!m_file || path != m_filePath) {
    if (!OpenFor(path, params)) return false;
  }
  if (m_fileSize == 0) bytes = NUtf16ToUtf8(FormatHeader(now));
  bytes += NUtf16ToUtf8(line);
  if (NStatus status = m_file->Write(m_fileSize, bytes.data(), bytes.size()); !status) {
    NReportStatus(status, params);
    m_file.reset();  // the next event starts again from the file's real length
    return false;
  }
  m_fileSize += bytes.size();
  return true;
}

std::u16string NFileDestination::FormatHeader(std::uint64_t) const { return {}; }

std::u16string NFileDestination::FormatLine(const ILogEvent& event) const {
  const NUtcTime time = NUtcTime::FromFileTime(event.GetTime() != 0 ? event.GetTime() : m_platform.CurrentFileTime());
  std::u16string line = time.Date() + u" " + time.Time() + u" " + GetSourceName() + u" " + GetTopicName(event.GetTopic());
  if (const IReportMessageParams* message = event.GetMessage()) {
    std::u16string_view text = message->GetText();
    while (!text.empty() && (text.back() == u'\n' || text.back() == u'\r')) text.remove_suffix(1);
    line += u" ";
    line += text;
  }
  line += u"\r\n";
  return line;
}
