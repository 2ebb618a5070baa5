#include "bench/NConfigFolderGenerator.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Seeds are spread with SplitMix64 so that neighbouring streams look unrelated.
std::uint64_t SplitMix(std::uint64_t x) {
  x += 0x9E3779B97F4A7C15ull;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
  return x ^ (x >> 31);
}

// One independent stream per file, so that a file's bytes depend only on the
// seed and its own identity, never on the order in which files are written.
constexpr std::uint64_t kGlobalStream = 1;
constexpr std::uint64_t kFolderStreamBase = 1ull << 40;
constexpr std::uint64_t kSessionStreamBase = 2ull << 40;
constexpr std::uint64_t kSessionNameStreamBase = 3ull << 40;

// std distributions differ between standard libraries; the engine's output
// does not, so every draw is made from it directly.
class NRandom {
 public:
  NRandom(std::uint64_t seed, std::uint64_t stream) : m_engine(SplitMix(seed ^ SplitMix(stream))) {}

  std::uint32_t Below(std::uint64_t count) { return count == 0 ? 0 : static_cast<std::uint32_t>(m_engine() % count); }
  std::uint32_t Between(std::uint32_t low, std::uint32_t high) {
    return low + static_cast<std::uint32_t>(m_engine() % (std::uint64_t{high} - low + 1));
  }
  bool Chance(int percent) { return Below(100) < static_cast<std::uint32_t>(percent); }

  template <typename T, std::size_t N>
  const T& Pick(const T (&items)[N]) {
    return items[Below(N)];
  }

 private:
  std::mt19937_64 m_engine;
};

struct NValueCounts {
  std::uint64_t dwords = 0;
  std::uint64_t strings = 0;
  std::uint64_t binaries = 0;
  std::uint64_t multiStrings = 0;

  void Add(const NValueCounts& other) {
    dwords += other.dwords;
    strings += other.strings;
    binaries += other.binaries;
    multiStrings += other.multiStrings;
  }
};

constexpr char kHexDigits[] = "0123456789abcdef";
constexpr std::size_t kBinaryBytesPerLine = 32;

void AppendHex32(std::string& out, std::uint32_t value) {
  for (int shift = 28; shift >= 0; shift -= 4) out += kHexDigits[(value >> shift) & 0xF];
}

// Builds the records of one key file, without the byte-order mark.
class NRecordWriter {
 public:
  void Dword(std::string_view name, std::uint32_t value) {
    Header('D', name);
    AppendHex32(m_text, value);
    m_text += "\r\n";
    ++m_counts.dwords;
  }

  void String(std::string_view name, std::string_view text) {
    Header('S', name);
    m_text += text;
    m_text += "\r\n";
    ++m_counts.strings;
  }

  void Binary(std::string_view name, const std::vector<std::uint8_t>& bytes) {
    Header('B', name);
    AppendHex32(m_text, static_cast<std::uint32_t>(bytes.size()));
    m_text += "\r\n";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      m_text += kHexDigits[bytes[i] >> 4];
      m_text += kHexDigits[bytes[i] & 0xF];
      if ((i + 1) % kBinaryBytesPerLine == 0 || i + 1 == bytes.size()) m_text += "\r\n";
    }
    ++m_counts.binaries;
  }

  void MultiString(std::string_view name, const std::vector<std::string>& lines) {
    Header('Z', name);
    AppendHex32(m_text, static_cast<std::uint32_t>(lines.size()));
    m_text += "\r\n";
    for (const std::string& line : lines) {
      m_text += ' ';
      m_text += line;
      m_text += "\r\n";
    }
    ++m_counts.multiStrings;
  }

  void Append(const NRecordWriter& other) {
    m_text += other.m_text;
    m_counts.Add(other.m_counts);
  }

  const std::string& Text() const { return m_text; }
  const NValueCounts& Counts() const { return m_counts; }

 private:
  void Header(char kind, std::string_view name) {
    m_text += kind;
    m_text += ":\"";
    m_text += name;
    m_text += "\"=";
  }

  std::string m_text;
  NValueCounts m_counts;
};

// A DWORD of the fixed vocabulary: most files keep the usual value, the rest
// draw from [low, high]. Present in presentPercent of the files.
struct NDwordEntry {
  std::string_view name;
  std::uint32_t usual = 0;
  std::uint32_t low = 0;
  std::uint32_t high = 0;
  int presentPercent = 100;
};

constexpr int kUsualPercent = 75;

template <std::size_t N>
void WriteDwords(NRecordWriter& writer, NRandom& random, const NDwordEntry (&entries)[N]) {
  for (const NDwordEntry& entry : entries) {
    if (entry.presentPercent < 100 && !random.Chance(entry.presentPercent)) continue;
    const bool usual = entry.low == entry.high || random.Chance(kUsualPercent);
    writer.Dword(entry.name, usual ? entry.usual : random.Between(entry.low, entry.high));
  }
}

// ---------------------------------------------------------------------------
// Vocabulary

constexpr NDwordEntry kSessionConnectionDwords[] = {
    {"Session Format Version", 3, 3, 3},
    {"[SSH2] Port", 22, 2200, 65535},
    {"[SSH1] Port", 22, 22, 22, 40},
    {"[Telnet] Port", 23, 2000, 9999},
    {"[RLogin] Port", 513, 513, 513, 40},
    {"[Serial] Baud Rate", 9600, 1200, 115200, 40},
    {"[Serial] Data Bits", 8, 7, 8, 40},
    {"[Serial] Stop Bits", 0, 0, 2, 40},
    {"[Serial] Parity", 0, 0, 4, 40},
    {"[Serial] Flow Control", 0, 0, 3, 40},
    {"[SSH2] Compression", 0, 0, 1},
    {"[SSH2] Compression Level", 6, 1, 9},
    {"[SSH2] Agent Forwarding", 0, 0, 1},
    {"[SSH2] X11 Forwarding", 0, 0, 1},
    {"[SSH2] Use GSSAPI", 0, 0, 1, 40},
    {"[SSH2] Strict Host Key Checking", 1, 0, 1},
    {"[SSH2] Display Logon Banner", 1, 0, 1},
    {"[SSH2] Rekey Interval", 3600, 600, 86400},
    {"[SSH2] Rekey Data Limit", 0x40000000, 0x100000, 0x40000000, 40},
    {"[SSH2] Window Size", 0x200000, 0x8000, 0x1000000},
    {"[SSH2] Max Packet Size", 0x8000, 0x4000, 0x40000},
    {"[SSH2] Key Exchange Timeout", 30, 10, 120, 40},
    {"[SSH2] Use Public Key", 1, 0, 1},
    {"[SSH2] Use Global Public Key", 1, 0, 1},
    {"[SSH2] Use Keyboard Interactive", 1, 0, 1},
    {"[SSH2] Use Password", 1, 0, 1},
    {"[SSH2] Prompt For Password", 1, 0, 1},
    {"[SSH2] Save Password", 0, 0, 1},
    {"Connect Timeout", 30, 5, 120},
    {"Idle Timeout", 0, 0, 7200},
    {"Send Keep Alive", 0, 0, 1},
    {"Keep Alive Interval", 60, 10, 600},
    {"Send TCP Keep Alive", 0, 0, 1},
    {"Auto Reconnect", 0, 0, 1},
    {"Reconnect Delay", 5, 1, 60},
    {"Max Reconnect Attempts", 3, 0, 20},
    {"Use Firewall", 0, 0, 1},
    {"Use IPv6", 0, 0, 1},
    {"Connect In Tab", 1, 0, 1},
    {"Use Jump Host", 0, 0, 1, 40},
    {"[Serial] Break Duration", 250, 100, 1000, 30},
    {"Proxy Port", 8080, 1024, 65535, 25},
    {"Jump Host Port", 22, 1024, 65535, 20},
    {"[Telnet] Negotiate Binary", 1, 0, 1, 40},
    {"[Telnet] Force Character Mode", 0, 0, 1, 40},
};

constexpr NDwordEntry kSessionTerminalDwords[] = {
    {"Rows", 24, 24, 80},
    {"Cols", 80, 80, 250},
    {"Scrollback", 500, 500, 100000},
    {"Max Columns", 256, 132, 1024, 40},
    {"ANSI Color", 1, 0, 1},
    {"Use Color Scheme", 1, 0, 1},
    {"Color Scheme Overrides ANSI Color", 0, 0, 1},
    {"Normal Foreground Color", 0x00C0C0C0, 0, 0x00FFFFFF},
    {"Normal Background Color", 0x00000000, 0, 0x00FFFFFF},
    {"Bold Foreground Color", 0x00FFFFFF, 0, 0x00FFFFFF},
    {"Bold Background Color", 0x00000000, 0, 0x00FFFFFF},
    {"Reverse Foreground Color", 0x00000000, 0, 0x00FFFFFF, 40},
    {"Reverse Background Color", 0x00C0C0C0, 0, 0x00FFFFFF, 40},
    {"Selection Foreground Color", 0x00FFFFFF, 0, 0x00FFFFFF},
    {"Selection Background Color", 0x00804000, 0, 0x00FFFFFF},
    {"Cursor Color", 0x0000FF00, 0, 0x00FFFFFF},
    {"Use Cursor Color", 0, 0, 1},
    {"Cursor Style", 0, 0, 3},
    {"Cursor Blink", 1, 0, 1},
    {"Cursor Blink Rate", 530, 200, 1200, 40},
    {"Word Wrap", 0, 0, 1},
    {"Auto Wrap", 1, 0, 1},
    {"Insert Mode", 0, 0, 1},
    {"New Line Mode", 0, 0, 1},
    {"Local Echo", 0, 0, 1},
    {"Backspace Sends Delete", 1, 0, 1},
    {"Delete Sends Backspace", 0, 0, 1},
    {"Keypad Application Mode", 0, 0, 1},
    {"Cursor Key Application Mode", 0, 0, 1},
    {"Use Alternate Screen", 1, 0, 1},
    {"Ignore Window Title Change", 0, 0, 1},
    {"Scroll To Bottom On Output", 1, 0, 1},
    {"Scroll To Bottom On Keypress", 1, 0, 1},
    {"Bell Mode", 1, 0, 3},
    {"Visual Bell", 0, 0, 1},
    {"Flash Window On Bell", 1, 0, 1},
    {"Margin Bell", 0, 0, 1, 40},
    {"Margin Column", 72, 60, 132, 40},
    {"Tab Stop Width", 8, 2, 8},
    {"Line Spacing", 0, 0, 4, 40},
    {"Character Spacing", 0, 0, 2, 40},
    {"Use Unicode Line Drawing", 1, 0, 1},
    {"Draw Bold Text", 1, 0, 1},
    {"Draw Lines Graphically", 1, 0, 1},
    {"Double Click Selects Word", 1, 0, 1},
    {"Copy On Select", 0, 0, 1},
    {"Paste On Right Click", 0, 0, 1},
    {"Paste On Middle Click", 1, 0, 1},
    {"Strip Trailing Spaces", 1, 0, 1},
    {"Line Send Delay", 5, 0, 500},
    {"Character Send Delay", 0, 0, 100},
    {"Wait For Prompt", 0, 0, 1},
    {"Wait For Prompt Timeout", 100, 10, 5000, 40},
    {"Enable Mouse Reporting", 1, 0, 1},
    {"Mouse Wheel Lines", 3, 1, 10},
    {"Shift Forces Local Mouse", 1, 0, 1},
    {"Resize Mode", 0, 0, 2},
    {"Synchronous Scrolling", 0, 0, 1, 40},
    {"Answerback Enabled", 0, 0, 1, 40},
    {"Use Unicode", 1, 0, 1},
    {"Code Page", 65001, 437, 1252},
    {"Input Method Enabled", 1, 0, 1, 40},
    {"Force Monospace", 1, 0, 1, 40},
    {"Blink Text", 1, 0, 1, 40},
    {"Alt Sends Escape", 1, 0, 1, 50},
    {"Emacs Meta Key", 0, 0, 1, 30},
    {"Auto Copy Selection", 0, 0, 1, 40},
    {"Clear Scrollback On Clear Screen", 0, 0, 1, 35},
    {"Window Opacity", 255, 128, 255, 30},
};

constexpr NDwordEntry kSessionBehaviourDwords[] = {
    {"Use Tab Color", 0, 0, 1},
    {"Tab Color", 0x00996633, 0, 0x00FFFFFF},
    {"Show Tab Number", 1, 0, 1},
    {"Tab Index", 0, 0, 20},
    {"Activity Indicator", 1, 0, 1},
    {"Activity Timeout", 5, 1, 60},
    {"Monitor Silence", 0, 0, 1},
    {"Silence Timeout", 30, 5, 600, 40},
    {"Use Title Bar Text", 0, 0, 1},
    {"Use Session Font", 0, 0, 1},
    {"Use Session Colors", 1, 0, 1},
    {"Use Button Bar", 0, 0, 1},
    {"Button Bar Index", 0, 0, 8, 40},
    {"Use Chat Window", 0, 0, 1, 40},
    {"Enable Broadcast", 1, 0, 1},
    {"Log Enabled", 0, 0, 1},
    {"Start Log Upon Connect", 0, 0, 1},
    {"Append To Log File", 1, 0, 1},
    {"Log Raw Data", 0, 0, 1},
    {"Log Timestamps", 0, 0, 1},
    {"Log Rotation", 0, 0, 3},
    {"Log Max Size", 0xA00000, 0x100000, 0x6400000},
    {"Log Max Files", 10, 1, 100},
    {"Log Upon Reconnect", 1, 0, 1},
    {"Log Custom Header", 0, 0, 1, 40},
    {"[Zmodem] Enabled", 1, 0, 1},
    {"[Zmodem] Auto Start", 1, 0, 1},
    {"[Zmodem] Packet Size", 1024, 128, 8192},
    {"[Zmodem] Overwrite Mode", 0, 0, 3},
    {"[Xmodem] Packet Size", 1024, 128, 1024, 40},
    {"[Xmodem] Use CRC", 1, 0, 1, 40},
    {"[Kermit] Packet Size", 1024, 94, 4096, 40},
    {"[SFTP] Buffer Size", 0x8000, 0x1000, 0x40000},
    {"[SFTP] Max Requests", 64, 1, 256},
    {"[SFTP] Preserve Times", 1, 0, 1},
    {"[SFTP] Show Hidden Files", 0, 0, 1},
    {"Transfer Protocol", 0, 0, 4},
    {"ASCII Upload Send Delay", 0, 0, 50, 40},
    {"Print Margin Top", 500, 0, 2000},
    {"Print Margin Bottom", 500, 0, 2000},
    {"Print Margin Left", 500, 0, 2000},
    {"Print Margin Right", 500, 0, 2000},
    {"Print Color", 0, 0, 1},
    {"Print Header", 1, 0, 1},
    {"Print Footer", 1, 0, 1},
    {"Print Orientation", 0, 0, 1},
    {"Print Auto Flush Timeout", 5, 1, 60, 40},
    {"Use Login Script", 0, 0, 1},
    {"Login Script Timeout", 30, 5, 300, 40},
    {"Run Script On Connect", 0, 0, 1},
    {"Enable Triggers", 0, 0, 1},
    {"Highlight Keywords", 0, 0, 1},
    {"Keyword Case Sensitive", 0, 0, 1, 40},
    {"Use Dynamic Forward", 0, 0, 1},
    {"Dynamic Forward Port", 1080, 1024, 65535, 40},
    {"X11 Display Number", 0, 0, 10, 40},
    {"Forward X11 Trusted", 0, 0, 1, 40},
    {"Confirm Disconnect", 1, 0, 1},
    {"Confirm Close", 1, 0, 1},
    {"Close On Disconnect", 0, 0, 1},
    {"Disable Paste", 0, 0, 1},
    {"Confirm Multiline Paste", 1, 0, 1},
    {"Read Only", 0, 0, 1},
    {"Locked", 0, 0, 1},
    {"Favorite", 0, 0, 1},
    {"Connection Count", 0, 1, 5000},
    {"Last Connected Time", 0, 1600000000, 1760000000},
    {"Created Time", 0, 1400000000, 1600000000, 40},
    {"Total Connected Seconds", 0, 1, 90000000, 40},
    {"Sort Index", 0, 0, 500, 45},
    {"Highlight Color", 0x0000FFFF, 0, 0x00FFFFFF, 30},
    {"Save Scrollback On Disconnect", 0, 0, 1, 30},
    {"Beep On Transfer Complete", 1, 0, 1, 40},
    {"Show Line Numbers", 0, 0, 1, 25},
    {"[SFTP] Resume Transfers", 1, 0, 1, 35},
    {"Session Template Version", 2, 1, 4, 40},
    {"Force Close On Exit", 0, 0, 1, 30},
};

constexpr std::string_view kRoles[] = {"web",  "db",    "app",    "cache", "mq",   "build", "git", "mail",
                                       "dns",  "proxy", "lb",     "node",  "bkp",  "log",   "mon", "vpn",
                                       "jump", "ci",    "nas",    "fw",    "ldap", "ftp",   "sql", "redis",
                                       "es",   "kafka", "router", "sw",    "ipmi", "term"};
constexpr std::string_view kEnvironments[] = {"prod", "stage", "dev", "test", "qa", "dr", "lab", "edge"};
constexpr std::string_view kDomains[] = {"example.com",         "corp.example.net", "lab.internal",
                                         "eu-west.example.org", "int.example.io",   "dmz.example.com"};
constexpr std::string_view kUsernames[] = {
    "root",   "admin", "deploy",  "ubuntu",      "ec2-user", "jsmith", "mgarcia",     "operator",
    "backup", "git",   "ansible", "svc-monitor", "dbadmin",  "netops", "j\xC3\xB6rg", "Jos\xC3\xA9"};
constexpr std::string_view kProtocols[] = {"SSH2",   "SSH2",   "SSH2", "SSH2",   "SSH2",
                                           "Telnet", "Serial", "SSH1", "RLogin", "Local Shell"};
constexpr std::string_view kEmulations[] = {"Xterm", "Xterm", "VT100",    "VT220",   "Linux",
                                            "ANSI",  "VT320", "SCO ANSI", "Wyse 50", "TN3270"};
constexpr std::string_view kEncodings[] = {"UTF-8",      "UTF-8",        "UTF-8",     "Default",
                                           "ISO-8859-1", "Windows-1252", "Shift_JIS", "KOI8-R"};
constexpr std::string_view kColorSchemes[] = {"Traditional",   "Solarized Dark", "Solarized Light", "Monokai",
                                              "White / Black", "Black / White",  "Green Screen",    "Dracula"};
constexpr std::string_view kPlainDescriptions[] = {"Primary database server",
                                                   "Build agent for nightly jobs",
                                                   "Customer staging environment",
                                                   "Core router, rack 4",
                                                   "Legacy mail relay",
                                                   "Monitoring collector",
                                                   "Kubernetes worker node",
                                                   "Backup target, do not reboot",
                                                   "Log shipper",
                                                   "Console server port 12",
                                                   "Jump host for the DMZ",
                                                   ""};
// Non-ASCII descriptions keep the readers' UTF-8 decoding honest.
constexpr std::string_view kInternationalDescriptions[] = {
    "Serveur de base de donn\xC3\xA9"
    "es \xE2\x80\x94 salle B, \xC3\xA9tage 2",
    "\xE6\x9D\xB1\xE4\xBA\xAC\xE3\x83\x87\xE3\x83\xBC\xE3\x82\xBF\xE3\x82\xBB\xE3\x83\xB3\xE3\x82\xBF\xE3\x83\xBC"
    " (\xE6\x97\xA5\xE6\x9C\xAC)",
    "Z\xC3\xBCrich B\xC3\xBCro, 3. Stock",
    "Caisse 3 \xE2\x80\x93 caf\xC3\xA9 du port",
    "\xD0\xA1\xD0\xBA\xD0\xBB\xD0\xB0\xD0\xB4 \xD0\x9C\xD0\xBE\xD1\x81\xD0\xBA\xD0\xB2\xD0\xB0, "
    "\xD1\x81\xD1\x82\xD0\xBE\xD0\xB9\xD0\xBA\xD0\xB0 12",
    "\xC3\x9Cr\xC3\xBCn veritaban\xC4\xB1 (\xC4\xB0zmir)",
    "Build farm \xF0\x9F\x9A\x80 nightly",
    "Entwicklung / Pr\xC3\xBC"
    "fstand",
    "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x83\x86\xE3\x82\xB9\xE3\x83\x88\xE7\x92\xB0\xE5\xA2\x83",
    "Se\xC3\xB1"
    "al de respaldo \xE2\x80\x93 M\xC3\xA1laga",
};
constexpr std::string_view kFontFaces[] = {"Consolas",         "Lucida Console",  "Courier New", "Cascadia Mono",
                                           "DejaVu Sans Mono", "Source Code Pro", "Fira Code",   "Terminal"};
constexpr std::string_view kCiphers[] = {
    "chacha20-poly1305@openssh.com,aes256-gcm@openssh.com,aes128-gcm@openssh.com,aes256-ctr,aes192-ctr,aes128-ctr",
    "aes256-ctr,aes192-ctr,aes128-ctr", "aes256-gcm@openssh.com,aes256-ctr,aes256-cbc,3des-cbc"};
constexpr std::string_view kMacs[] = {
    "hmac-sha2-512-etm@openssh.com,hmac-sha2-256-etm@openssh.com,hmac-sha2-512,hmac-sha2-256",
    "hmac-sha2-256,hmac-sha1", "umac-128-etm@openssh.com,hmac-sha2-256-etm@openssh.com,hmac-sha1"};
constexpr std::string_view kKeyExchanges[] = {
    "curve25519-sha256,curve25519-sha256@libssh.org,ecdh-sha2-nistp521,ecdh-sha2-nistp384,ecdh-sha2-nistp256,"
    "diffie-hellman-group-exchange-sha256,diffie-hellman-group16-sha512,diffie-hellman-group14-sha256",
    "diffie-hellman-group14-sha1,diffie-hellman-group1-sha1",
    "curve25519-sha256,ecdh-sha2-nistp256,diffie-hellman-group14-sha256"};
constexpr std::string_view kHostKeyAlgorithms[] = {
    "ssh-ed25519,ecdsa-sha2-nistp256,ecdsa-sha2-nistp384,ecdsa-sha2-nistp521,rsa-sha2-512,rsa-sha2-256,ssh-rsa",
    "ssh-rsa,ssh-dss", "ssh-ed25519,rsa-sha2-512,rsa-sha2-256"};
constexpr std::string_view kKeys[] = {"F1",     "F2",     "F3",   "F4",   "F5",     "F6",     "F7",     "F8",
                                      "F9",     "F10",    "F11",  "F12",  "Home",   "End",    "PageUp", "PageDown",
                                      "Insert", "Delete", "Up",   "Down", "Left",   "Right",  "Tab",    "Enter",
                                      "Back",   "Space",  "A",    "C",    "D",      "V",      "W",      "X",
                                      "Z",      "Num0",   "Num5", "Num9", "NumAdd", "NumSub", "NumDiv", "NumMul"};
constexpr std::string_view kModifiers[] = {"", "Shift+", "Ctrl+", "Alt+", "Ctrl+Shift+", "Ctrl+Alt+"};
constexpr std::string_view kKeyActions[] = {
    "\\033OP",    "\\033[15~",   "\\033[1;5D",   "\\033[1;5C",   "\\033[2~",   "\\033[3~", "MENU_COPY",
    "MENU_PASTE", "MENU_FIND",   "TAB_NEXT",     "TAB_PREVIOUS", "SEND_BREAK", "\\033b",   "\\033f",
    "SCROLL_UP",  "SCROLL_DOWN", "RUN_SCRIPT 2", "CONNECT_NEXT", "\\x7f",      "\\r\\n",   "CLEAR_SCREEN"};

std::string Padded(std::uint64_t value, int width) {
  std::string digits = std::to_string(value);
  if (static_cast<int>(digits.size()) < width) digits.insert(0, static_cast<std::size_t>(width) - digits.size(), '0');
  return digits;
}

std::string HexText(NRandom& random, std::size_t byteCount) {
  std::string out;
  out.reserve(byteCount * 2);
  for (std::size_t i = 0; i < byteCount; ++i) {
    const std::uint32_t byte = random.Below(256);
    out += kHexDigits[byte >> 4];
    out += kHexDigits[byte & 0xF];
  }
  return out;
}

std::string Base64Text(NRandom& random, std::size_t length) {
  constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (std::size_t i = 0; i < length; ++i) out += kAlphabet[random.Below(kAlphabet.size())];
  return out;
}

std::string Guid(NRandom& random) {
  std::string hex = HexText(random, 16);
  for (char& c : hex) c = static_cast<char>(c >= 'a' ? c - 'a' + 'A' : c);
  return "{" + hex.substr(0, 8) + "-" + hex.substr(8, 4) + "-" + hex.substr(12, 4) + "-" + hex.substr(16, 4) + "-" +
         hex.substr(20) + "}";
}

void PutLittleEndian(std::vector<std::uint8_t>& bytes, std::size_t offset, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes[offset + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> (8 * i));
}

// The 44-byte window placement record: length, flags, show state, minimised
// and maximised positions, normal rectangle.
std::vector<std::uint8_t> WindowPlacement(NRandom& random) {
  std::vector<std::uint8_t> bytes(44, 0);
  const std::uint32_t left = random.Between(0, 1600);
  const std::uint32_t top = random.Between(0, 900);
  PutLittleEndian(bytes, 0, 44);
  PutLittleEndian(bytes, 4, random.Chance(20) ? 2 : 0);
  PutLittleEndian(bytes, 8, random.Chance(25) ? 3 : 1);
  PutLittleEndian(bytes, 12, 0xFFFFFFFF);
  PutLittleEndian(bytes, 16, 0xFFFFFFFF);
  PutLittleEndian(bytes, 20, 0xFFFFFFFF);
  PutLittleEndian(bytes, 24, 0xFFFFFFFF);
  PutLittleEndian(bytes, 28, left);
  PutLittleEndian(bytes, 32, top);
  PutLittleEndian(bytes, 36, left + random.Between(640, 1920));
  PutLittleEndian(bytes, 40, top + random.Between(400, 1200));
  return bytes;
}

// The 92-byte font record: metrics and flags, then a 32-unit UTF-16LE face name.
std::vector<std::uint8_t> Font(NRandom& random) {
  std::vector<std::uint8_t> bytes(92, 0);
  PutLittleEndian(bytes, 0, static_cast<std::uint32_t>(-static_cast<std::int32_t>(random.Between(11, 24))));
  PutLittleEndian(bytes, 16, random.Chance(80) ? 400 : 700);
  bytes[23] = random.Chance(90) ? 1 : 0;  // character set
  bytes[24] = 3;                          // output precision
  bytes[25] = 2;                          // clip precision
  bytes[26] = random.Chance(70) ? 5 : 4;  // quality
  bytes[27] = 0x31;                       // fixed pitch, modern family
  const std::string_view face = random.Pick(kFontFaces);
  for (std::size_t i = 0; i < face.size() && i < 31; ++i) bytes[28 + 2 * i] = static_cast<std::uint8_t>(face[i]);
  return bytes;
}

std::vector<std::uint8_t> RandomBytes(NRandom& random, std::size_t count) {
  std::vector<std::uint8_t> bytes(count);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random.Below(256));
  return bytes;
}

std::vector<std::uint8_t> ColorTable(NRandom& random) {
  std::vector<std::uint8_t> bytes(64, 0);
  for (std::size_t i = 0; i < 16; ++i) PutLittleEndian(bytes, 4 * i, random.Between(0, 0x00FFFFFF));
  return bytes;
}

// ---------------------------------------------------------------------------
// Layout

constexpr std::string_view kLevelNames[] = {"Region", "Site", "Team", "Group"};

std::string FolderName(int level, int index) {
  const std::size_t last = std::size(kLevelNames) - 1;
  const std::string_view prefix = kLevelNames[std::min(static_cast<std::size_t>(level), last)];
  return std::string(prefix) + " " + Padded(static_cast<std::uint64_t>(index) + 1, 2);
}

class NLayout {
 public:
  explicit NLayout(const NConfigFolderSpec& settings) : m_settings(settings) {
    if (settings.sessions < 0) throw std::invalid_argument("the session count is negative");
    if (settings.fanout < 1) throw std::invalid_argument("the fanout must be at least 1");
    if (settings.depth < 0) throw std::invalid_argument("the depth is negative");
    constexpr std::uint64_t kMaxLeaves = 1u << 20;
    for (int level = 0; level < settings.depth; ++level) {
      m_leafCount *= static_cast<std::uint64_t>(settings.fanout);
      if (m_leafCount > kMaxLeaves) throw std::invalid_argument("fanout and depth give too many folders");
    }
    m_indexWidth = static_cast<int>(std::to_string(settings.sessions > 0 ? settings.sessions - 1 : 0).size());
    if (m_indexWidth < 5) m_indexWidth = 5;
  }

  // Folder names from "Sessions" down to the leaf, most significant level first.
  std::string LeafPath(std::uint64_t leaf) const {
    std::vector<int> digits(static_cast<std::size_t>(m_settings.depth));
    for (int level = m_settings.depth - 1; level >= 0; --level) {
      digits[static_cast<std::size_t>(level)] = static_cast<int>(leaf % static_cast<std::uint64_t>(m_settings.fanout));
      leaf /= static_cast<std::uint64_t>(m_settings.fanout);
    }
    std::string path = "Sessions";
    for (int level = 0; level < m_settings.depth; ++level) {
      path += '/';
      path += FolderName(level, digits[static_cast<std::size_t>(level)]);
    }
    return path;
  }

  // Round robin keeps the leaves within one session of each other.
  std::uint64_t LeafOfSession(int session) const { return static_cast<std::uint64_t>(session) % m_leafCount; }

  std::string SessionName(int session) const {
    NRandom random(m_settings.seed, kSessionNameStreamBase + static_cast<std::uint64_t>(session));
    std::string name(random.Pick(kRoles));
    name += "-" + std::string(random.Pick(kEnvironments));
    return name + "-" + Padded(static_cast<std::uint64_t>(session), m_indexWidth);
  }

  std::string SessionPath(int session) const { return LeafPath(LeafOfSession(session)) + "/" + SessionName(session); }

 private:
  const NConfigFolderSpec& m_settings;
  std::uint64_t m_leafCount = 1;
  int m_indexWidth = 5;
};

// ---------------------------------------------------------------------------
// Files

void WriteFile(const fs::path& path, const NRecordWriter& records, NConfigFolderStats& stats) {
  static constexpr char kBom[] = "\xEF\xBB\xBF";
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(kBom, 3);
  out.write(records.Text().data(), static_cast<std::streamsize>(records.Text().size()));
  out.close();
  if (!out) throw std::runtime_error("cannot write " + path.string());
  ++stats.filesWritten;
  stats.totalBytes += 3 + records.Text().size();
  stats.dwordValues += records.Counts().dwords;
  stats.stringValues += records.Counts().strings;
  stats.binaryValues += records.Counts().binaries;
  stats.multiStringValues += records.Counts().multiStrings;
}

// The keymap grows until the file reaches its drawn size, so that session
// files cover the whole expected range whatever the optional values were.
constexpr std::size_t kKeymapMaxLines = 50;
constexpr std::size_t kKeymapMinLines = 4;
constexpr std::uint32_t kSessionSizeLow = 7500;
constexpr std::uint32_t kSessionSizeHigh = 8700;

std::vector<std::string> KeymapLines(NRandom& random, std::size_t count) {
  std::vector<std::string> lines;
  constexpr std::size_t kKeyCount = std::size(kKeys);
  constexpr std::size_t kCombinations = kKeyCount * std::size(kModifiers);
  // A kStride coprime with the combination count visits distinct keys.
  constexpr std::size_t kStride = 7;
  static_assert(std::gcd(kStride, kCombinations) == 1 && kCombinations >= kKeymapMaxLines);
  std::size_t slot = random.Below(kCombinations);
  for (std::size_t i = 0; i < count && i < kCombinations; ++i) {
    lines.push_back(std::string(kModifiers[slot / kKeyCount]) + std::string(kKeys[slot % kKeyCount]) + " " +
                    std::string(random.Pick(kKeyActions)));
    slot = (slot + kStride) % kCombinations;
  }
  return lines;
}

struct NSessionIdentity {
  std::string name;
  std::string hostname;
  std::string username;
  std::string_view protocol;
};

void WriteSessionIdentity(NRecordWriter& writer, NRandom& random, const NSessionIdentity& identity) {
  writer.String("Hostname", identity.hostname);
  writer.String("Username", identity.username);
  writer.String("Protocol Name", identity.protocol);
  writer.String("Description",
                random.Chance(15) ? random.Pick(kInternationalDescriptions) : random.Pick(kPlainDescriptions));
  writer.String("Emulation", random.Pick(kEmulations));
  writer.String("Terminal Type", random.Chance(70) ? "xterm-256color" : random.Pick({"vt100", "xterm", "linux"}));
  writer.String("Character Encoding", random.Pick(kEncodings));
  writer.String("Color Scheme", random.Pick(kColorSchemes));
  writer.String("Keymap Name", random.Chance(70) ? "Default" : random.Pick({"Emacs", "Vim Friendly", "Legacy VT"}));
  writer.String("Firewall Name", random.Chance(85) ? "None" : random.Pick({"Corporate SOCKS", "HTTP Proxy"}));
  writer.String("Jump Host", random.Chance(80) ? "" : "jump" + Padded(random.Between(1, 9), 2) + ".example.com");
  writer.String("Identity Filename", "C:\\Users\\" + identity.username + "\\.ssh\\" +
                                         random.Pick({"id_ed25519", "id_rsa", "id_ecdsa", "deploy_key"}));
  writer.String("[SSH2] Cipher List", random.Pick(kCiphers));
  writer.String("[SSH2] MAC List", random.Pick(kMacs));
  writer.String("[SSH2] Key Exchange Algorithms", random.Pick(kKeyExchanges));
  writer.String("[SSH2] Host Key Algorithms", random.Pick(kHostKeyAlgorithms));
  writer.String("[SSH2] Authentication Order", "publickey,keyboard-interactive,password,gssapi");
  writer.String("[SSH2] Compression List", "zlib@openssh.com,zlib,none");
  writer.String("[SSH2] Host Key Fingerprint", "SHA256:" + Base64Text(random, 43));
  writer.String("[Serial] Port", "COM" + std::to_string(random.Between(1, 8)));
  writer.String("Answerback", "");
  writer.String("Word Delimiters", " \\t\"'`()[]{}<>|;,");
  writer.String("Title Bar Text", random.Chance(60) ? "%S - %h" : "%u@%h (%p)");
  writer.String("Tab Title", identity.name);
  writer.String("Session GUID", Guid(random));
  if (random.Chance(60)) writer.String("Password V2", "02:" + HexText(random, 48));
}

void WriteSessionPaths(NRecordWriter& writer, NRandom& random, const NSessionIdentity& identity) {
  const std::string home = "C:\\Users\\" + identity.username;
  writer.String("Log File Name", home + "\\Documents\\Logs\\%S-%Y%M%D-%h%m%s.log");
  writer.String("Log Header Text", "=== %S connected %Y-%M-%D %h:%m:%s ===");
  writer.String("Log Footer Text", "=== %S disconnected ===");
  writer.String("Log Timestamp Format", "[%h:%m:%s.%t] ");
  writer.String("Upload Folder", home + "\\Uploads");
  writer.String("Download Folder", home + "\\Downloads");
  writer.String("[SFTP] Local Folder", home + "\\Documents");
  writer.String("[SFTP] Remote Folder", random.Chance(70) ? "~" : "/var/www/" + identity.name);
  writer.String("Script Filename", random.Chance(80) ? "" : home + "\\Scripts\\login_" + identity.name + ".py");
  writer.String("Script Arguments", "");
  writer.String("Printer Name",
                random.Chance(70) ? "Default Printer" : "\\\\print01\\Floor" + std::to_string(random.Between(1, 6)));
  writer.String("Print Header Text", "%S  %D");
  writer.String("Print Footer Text", "Page %p");
  writer.String("Button Bar Name", "Default");
  writer.String("Keyword Set Name", random.Chance(80) ? "" : "Errors and Warnings");
  writer.String("Trigger Set Name", "");
  writer.String("Local Shell Command", "cmd.exe");
  writer.String("Working Directory", home);
  writer.String("Initial Command", random.Chance(85) ? "" : "sudo -i");
  writer.String("Created By", identity.username);
  if (random.Chance(20)) writer.String("Proxy Host", "proxy" + std::to_string(random.Between(1, 4)) + ".example.com");
  if (random.Chance(30)) writer.String("Tab Group Name", std::string(random.Pick(kEnvironments)) + " servers");
  if (random.Chance(25)) {
    writer.String("Notes", random.Chance(30) ? random.Pick(kInternationalDescriptions)
                                             : "Ticket " + std::to_string(random.Between(1000, 99999)));
  }
}

void WriteSessionBinaries(NRecordWriter& writer, NRandom& random) {
  writer.Binary("Window Placement", WindowPlacement(random));
  writer.Binary("Normal Font v2", Font(random));
  if (random.Chance(60)) writer.Binary("Narrow Font v2", Font(random));
  if (random.Chance(50)) writer.Binary("Printer Font v2", Font(random));
  if (random.Chance(40)) writer.Binary("ANSI Color Table", ColorTable(random));
  if (random.Chance(20)) writer.Binary("Session Cache", {});
}

void WriteSessionLists(NRecordWriter& writer, NRandom& random, const NSessionIdentity& identity) {
  std::vector<std::string> forwards;
  const std::uint32_t forwardCount = random.Chance(60) ? 0 : random.Between(1, 6);
  for (std::uint32_t i = 0; i < forwardCount; ++i) {
    const std::uint32_t port = random.Between(1024, 65000);
    forwards.push_back("L" + std::to_string(port) +
                       " localhost:" + std::to_string(random.Pick({80u, 443u, 5432u, 3306u, 6379u})) + " tunnel" +
                       std::to_string(i + 1));
  }
  writer.MultiString("Port Forward Table", forwards);

  std::vector<std::string> environment = {"LANG=en_US.UTF-8"};
  const std::uint32_t extra = random.Between(0, 4);
  for (std::uint32_t i = 0; i < extra; ++i) {
    environment.push_back(
        random.Pick({"TERM=xterm-256color", "EDITOR=vim", "TZ=UTC", "LC_ALL=C.UTF-8", "PAGER=less", "HISTSIZE=10000"}));
  }
  writer.MultiString("Environment", environment);

  if (random.Chance(30)) {
    std::vector<std::string> steps;
    const std::uint32_t count = random.Between(1, 4);
    for (std::uint32_t i = 0; i < count; ++i) {
      steps.push_back("expect \"" + std::string(random.Pick({"login:", "Password:", "$ ", "# "})) + "\"");
      steps.push_back("send \"" + (i == 0 ? identity.username : std::string("uptime")) + "\\r\"");
    }
    writer.MultiString("Login Script Steps", steps);
  }
  if (random.Chance(25)) {
    std::vector<std::string> triggers;
    const std::uint32_t count = random.Between(1, 4);
    for (std::uint32_t i = 0; i < count; ++i) {
      std::string trigger(random.Pick({"ERROR", "FATAL", "panic:", "Connection reset", "[sudo] password"}));
      trigger += "|" + std::string(random.Pick({"highlight red", "beep", "send \\r", "flash"}));
      triggers.push_back(trigger);
    }
    writer.MultiString("Trigger Table", triggers);
  }
  if (random.Chance(10)) writer.MultiString("Keyword List", {});
}

NRecordWriter SessionRecords(const NConfigFolderSpec& settings, const NLayout& layout, int session) {
  NRandom random(settings.seed, kSessionStreamBase + static_cast<std::uint64_t>(session));
  NSessionIdentity identity;
  identity.name = layout.SessionName(session);
  const std::string role = identity.name.substr(0, identity.name.find('-'));
  // One draw per statement: the operands of + may be evaluated in any order.
  if (random.Chance(15)) {
    identity.hostname = "10." + std::to_string(random.Below(256));
    identity.hostname += "." + std::to_string(random.Below(256));
    identity.hostname += "." + std::to_string(random.Between(1, 254));
  } else {
    identity.hostname = role + Padded(random.Between(1, 40), 2);
    identity.hostname += "." + std::string(random.Pick(kEnvironments));
    identity.hostname += "." + std::string(random.Pick(kDomains));
  }
  identity.username = random.Pick(kUsernames);
  identity.protocol = random.Pick(kProtocols);

  NRecordWriter head;
  head.Dword("Is Session", 1);
  WriteSessionIdentity(head, random, identity);
  WriteDwords(head, random, kSessionConnectionDwords);
  WriteDwords(head, random, kSessionTerminalDwords);
  WriteSessionBinaries(head, random);

  NRecordWriter tail;
  WriteSessionPaths(tail, random, identity);
  WriteDwords(tail, random, kSessionBehaviourDwords);
  WriteSessionLists(tail, random, identity);

  const std::size_t target = random.Between(kSessionSizeLow, kSessionSizeHigh);
  std::vector<std::string> keymap = KeymapLines(random, kKeymapMaxLines);
  std::size_t size = 3 + head.Text().size() + tail.Text().size() + std::string_view("Z:\"Keymap\"=00000000\r\n").size();
  std::size_t lines = 0;
  while (lines < keymap.size() && (lines < kKeymapMinLines || size + keymap[lines].size() + 3 <= target)) {
    size += keymap[lines].size() + 3;
    ++lines;
  }
  keymap.resize(lines);

  NRecordWriter records;
  records.Append(head);
  records.MultiString("Keymap", keymap);
  records.Append(tail);
  return records;
}

constexpr NDwordEntry kFolderDwords[] = {
    {"Is Expanded", 0, 0, 1},
    {"Sort Index", 0, 0, 64},
    {"Folder Version", 2, 2, 2},
    {"Icon Index", 0, 0, 12},
    {"Folder Color", 0x00808080, 0, 0x00FFFFFF},
    {"Inherit Session Options", 1, 0, 1, 40},
};

NRecordWriter FolderRecords(const NConfigFolderSpec& settings, std::uint64_t ordinal, const std::string& name) {
  NRandom random(settings.seed, kFolderStreamBase + ordinal);
  NRecordWriter writer;
  WriteDwords(writer, random, kFolderDwords);
  writer.String("Description", random.Chance(50) ? "" : name + " servers");
  if (random.Chance(30)) writer.String("Default Username", random.Pick(kUsernames));
  if (random.Chance(20)) writer.MultiString("Notes", {"Owned by the " + name + " team", "Escalation: on-call"});
  return writer;
}

// ---------------------------------------------------------------------------
// Global settings

constexpr NDwordEntry kGlobalDwords[] = {
    {"Show Toolbar", 1, 0, 1},
    {"Show Status Bar", 1, 0, 1},
    {"Show Menu Bar", 1, 0, 1},
    {"Show Session Manager", 1, 0, 1},
    {"Show Command Window", 0, 0, 1},
    {"Show Button Bar", 0, 0, 1},
    {"Show Tabs", 1, 0, 1},
    {"Show Tab Close Buttons", 1, 0, 1},
    {"Show Connect Dialog On Startup", 1, 0, 1},
    {"Show Quick Connect On Startup", 0, 0, 1},
    {"Show Tips On Startup", 0, 0, 1},
    {"Show Scrollbar", 1, 0, 1},
    {"Show Horizontal Scrollbar", 0, 0, 1},
    {"Show Local File Manager", 0, 0, 1},
    {"Show Activity Processor", 1, 0, 1},
    {"Session Manager Width", 240, 120, 640},
    {"Session Manager Docked", 1, 0, 1},
    {"Session Manager Auto Hide", 0, 0, 1},
    {"Session Manager Sort Mode", 0, 0, 3},
    {"Session Manager Show Details", 1, 0, 1},
    {"Command Window Height", 80, 40, 400},
    {"Command Window Send To All", 0, 0, 1},
    {"Single Instance", 1, 0, 1},
    {"Minimize To Tray", 0, 0, 1},
    {"Always On Top", 0, 0, 1},
    {"Full Screen", 0, 0, 1},
    {"Restore Window Position", 1, 0, 1},
    {"Restore Open Sessions", 0, 0, 1},
    {"Confirm Exit", 1, 0, 1},
    {"Confirm Exit With Open Sessions", 1, 0, 1},
    {"Confirm Close Tab", 1, 0, 1},
    {"Confirm Paste Lines", 1, 0, 1},
    {"Paste Line Threshold", 1, 1, 100},
    {"Use Tabbed Interface", 1, 0, 1},
    {"Tab Position", 0, 0, 3},
    {"Tab Width Mode", 0, 0, 2},
    {"Max Tab Width", 200, 80, 400},
    {"New Tab Position", 0, 0, 2},
    {"Close Tab On Disconnect", 0, 0, 1},
    {"Middle Click Closes Tab", 1, 0, 1},
    {"Double Click Duplicates Tab", 0, 0, 1},
    {"Tab Switch Order", 0, 0, 1},
    {"Activity Flash Count", 3, 0, 10},
    {"Max Recent Sessions", 10, 4, 30},
    {"Max Recent Files", 10, 4, 30},
    {"Max Command History", 100, 20, 1000},
    {"Auto Save Options", 1, 0, 1},
    {"Auto Save Interval", 300, 30, 3600},
    {"Check For Updates", 1, 0, 1},
    {"Update Check Interval", 7, 1, 30},
    {"Last Update Check", 0, 1600000000, 1760000000},
    {"Send Usage Statistics", 0, 0, 1},
    {"Global Options Version", 9, 9, 9},
    {"Configuration Format Version", 2, 2, 2},
    {"First Run", 0, 0, 1},
    {"Run Count", 0, 1, 20000},
    {"Trial Days Remaining", 30, 0, 30},
    {"License Check Passed", 1, 0, 1},
    {"Use Configuration Passphrase", 0, 0, 1},
    {"Passphrase Timeout", 0, 0, 3600},
    {"Lock Configuration", 0, 0, 1},
    {"Mouse Cursor Hide While Typing", 1, 0, 1},
    {"Mouse Wheel Scroll Lines", 3, 1, 10},
    {"Mouse Wheel Zoom", 1, 0, 1},
    {"Right Click Menu", 1, 0, 1},
    {"Copy On Select", 0, 0, 1},
    {"Copy With Formatting", 0, 0, 1},
    {"Copy As HTML", 0, 0, 1},
    {"Copy As RTF", 0, 0, 1},
    {"Trim Trailing Whitespace On Copy", 1, 0, 1},
    {"Paste Delay", 0, 0, 100},
    {"Bracketed Paste", 1, 0, 1},
    {"Find Match Case", 0, 0, 1},
    {"Find Whole Word", 0, 0, 1},
    {"Find Regular Expression", 0, 0, 1},
    {"Find Wrap Around", 1, 0, 1},
    {"Find Direction", 0, 0, 1},
    {"Highlight All Matches", 1, 0, 1},
    {"Default Rows", 24, 24, 60},
    {"Default Cols", 80, 80, 200},
    {"Default Scrollback", 500, 500, 100000},
    {"Default Port", 22, 22, 22},
    {"Default Protocol Index", 0, 0, 5},
    {"Terminal Update Rate", 60, 10, 240},
    {"Smooth Scrolling", 0, 0, 1},
    {"Cursor Blink Global", 1, 0, 1},
    {"Use ClearType", 1, 0, 1},
    {"Use Direct Write", 1, 0, 1},
    {"Font Smoothing", 2, 0, 3},
    {"High DPI Mode", 1, 0, 2},
    {"UI Theme", 0, 0, 3},
    {"Accent Color", 0x00D77800, 0, 0x00FFFFFF},
    {"Use System Colors", 1, 0, 1},
    {"Window Opacity", 255, 128, 255},
    {"Inactive Window Opacity", 255, 128, 255},
    {"Transparent When Inactive", 0, 0, 1},
    {"Snap Windows", 1, 0, 1},
    {"Tile Mode", 0, 0, 2},
    {"Log Folder Enabled", 0, 0, 1},
    {"Log Global Timestamps", 0, 0, 1},
    {"Log Compression", 0, 0, 1},
    {"Log Retention Days", 30, 1, 365},
    {"Trace Options", 0, 0, 0xFF},
    {"Trace SSH2 Packets", 0, 0, 1},
    {"Trace Script Output", 0, 0, 1},
    {"Script Engine", 0, 0, 2},
    {"Script Timeout", 0, 0, 600},
    {"Script Allow File Access", 1, 0, 1},
    {"Script Debug Mode", 0, 0, 1},
    {"Agent Enabled", 1, 0, 1},
    {"Agent Confirm Use", 0, 0, 1},
    {"Agent Key Lifetime", 0, 0, 86400},
    {"Agent Add Keys On Load", 1, 0, 1},
    {"Known Hosts Mode", 1, 0, 2},
    {"Warn On Host Key Change", 1, 0, 1},
    {"Accept New Host Keys", 0, 0, 1},
    {"Key Generation Bits", 4096, 2048, 8192},
    {"Key Generation Type", 2, 0, 3},
    {"Default Cipher Index", 0, 0, 8},
    {"FIPS Mode", 0, 0, 1},
    {"Allow Weak Ciphers", 0, 0, 1},
    {"Allow Weak Key Exchange", 0, 0, 1},
    {"Network Timeout", 30, 5, 300},
    {"Proxy Type", 0, 0, 4},
    {"Proxy Port", 8080, 1024, 65535},
    {"Proxy Use Authentication", 0, 0, 1},
    {"Use Windows Credentials", 0, 0, 1},
    {"DNS Lookup Mode", 0, 0, 2},
    {"Prefer IPv6", 0, 0, 1},
    {"Transfer Window Auto Close", 1, 0, 1},
    {"Transfer Overwrite Prompt", 1, 0, 1},
    {"Transfer Buffer Size", 0x10000, 0x1000, 0x100000},
    {"Transfer Binary Mode", 1, 0, 1},
    {"Transfer Preserve Permissions", 1, 0, 1},
    {"Transfer Concurrent Files", 2, 1, 8},
    {"Print Use System Dialog", 1, 0, 1},
    {"Print Line Numbers", 0, 0, 1},
    {"Print Copies", 1, 1, 4},
    {"Keyboard Layout Override", 0, 0, 1},
    {"Alt Key Menu Access", 1, 0, 1},
    {"Num Lock Override", 0, 0, 1},
    {"Scroll Lock Freezes Output", 1, 0, 1},
    {"Beep On Error", 1, 0, 1},
    {"Sound On Connect", 0, 0, 1},
    {"Sound On Disconnect", 0, 0, 1},
    {"Notification Mode", 1, 0, 3},
    {"Notification Timeout", 5, 1, 60},
    {"Accessibility Mode", 0, 0, 1},
    {"Large Icons", 0, 0, 1},
    {"Toolbar Icon Size", 16, 16, 32},
    {"Toolbar Show Text", 0, 0, 1},
    {"Button Bar Rows", 1, 1, 3},
    {"Session Filter Mode", 0, 0, 2},
    {"Session Filter Case Sensitive", 0, 0, 1},
    {"Connect Dialog Show Folders", 1, 0, 1},
    {"Connect Dialog Sort Column", 0, 0, 5},
    {"Connect Dialog Sort Descending", 0, 0, 1},
    {"Connect Dialog Width", 520, 400, 1200},
    {"Connect Dialog Height", 420, 300, 900},
    {"Quick Connect Save Session", 0, 0, 1},
    {"Quick Connect Open In Tab", 1, 0, 1},
    {"Options Dialog Last Page", 0, 0, 40},
    {"Global Options Dialog Last Page", 0, 0, 60},
    {"Editor Default Tab Size", 4, 2, 8},
    {"Editor Word Wrap", 0, 0, 1},
};

constexpr std::string_view kDialogs[] = {
    "Connect Dialog",  "Quick Connect Dialog",  "Session Options Dialog", "Global Options Dialog",
    "Find Dialog",     "Key Generation Dialog", "Host Key Dialog",        "Transfer Dialog",
    "Script Dialog",   "Button Bar Dialog",     "Keymap Editor",          "Color Scheme Editor",
    "Keyword Editor",  "Trigger Editor",        "Port Forward Dialog",    "Agent Dialog",
    "Print Preview",   "About Dialog",          "Command Window",         "Local File Manager",
    "Activity Window", "Chat Window",           "Session Export Dialog",  "Session Import Dialog"};

constexpr std::string_view kLanguages[] = {"English",
                                           "Deutsch",
                                           "Fran\xC3\xA7"
                                           "ais",
                                           "Espa\xC3\xB1ol",
                                           "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E",
                                           "Italiano"};

NRecordWriter GlobalRecords(const NConfigFolderSpec& settings, const NLayout& layout) {
  NRandom random(settings.seed, kGlobalStream);
  NRecordWriter writer;
  WriteDwords(writer, random, kGlobalDwords);
  for (int i = 0; i < 16; ++i) writer.Dword("Custom Color " + std::to_string(i), random.Between(0, 0x00FFFFFF));
  for (int i = 0; i < 8; ++i)
    writer.Dword("Session Manager Column Width " + std::to_string(i), random.Between(40, 300));
  for (int i = 0; i < 8; ++i)
    writer.Dword("Session Manager Column Order " + std::to_string(i), static_cast<std::uint32_t>(i));

  writer.String("Language", random.Pick(kLanguages));
  writer.String("Language File", "lang\\en-US.dll");
  writer.String("Configuration Folder", "C:\\Users\\Public\\Config");
  writer.String("Log Folder", "C:\\Users\\Public\\Logs");
  writer.String("Script Folder", "C:\\Users\\Public\\Scripts");
  writer.String("Download Folder", "C:\\Users\\Public\\Downloads");
  writer.String("Upload Folder", "C:\\Users\\Public\\Uploads");
  writer.String("Known Hosts File", "C:\\Users\\Public\\Config\\known_hosts");
  writer.String("Host Key Database Folder", "C:\\Users\\Public\\Config\\HostKeys");
  writer.String("Identity Filename", "C:\\Users\\Public\\.ssh\\id_ed25519");
  writer.String("Identity Filename Public", "C:\\Users\\Public\\.ssh\\id_ed25519.pub");
  writer.String("Default Session", "Default");
  writer.String("Default Emulation", "Xterm");
  writer.String("Default Character Encoding", "UTF-8");
  writer.String("Default Color Scheme", random.Pick(kColorSchemes));
  writer.String("Default Keymap", "Default");
  writer.String("Default Button Bar", "Default");
  writer.String("Default Username", random.Pick(kUsernames));
  writer.String("Editor Path", "notepad.exe");
  writer.String("Diff Tool Path", "");
  writer.String("Browser Path", "");
  writer.String("Proxy Host", "");
  writer.String("Proxy Username", "");
  writer.String("Proxy Exclusions", "localhost;127.0.0.1;*.internal");
  writer.String("Time Format", "%H:%M:%S");
  writer.String("Date Format", "%Y-%m-%d");
  writer.String("Window Title Format", "%S - %A");
  writer.String("Status Bar Format", "%p | %r x %c | %e | %t");
  writer.String("Print Header Format", "%S  %D");
  writer.String("Print Footer Format", "Page %p of %P");
  writer.String("Word Delimiters", " \\t\"'`()[]{}<>|;,");
  writer.String("Session Filter", "");
  writer.String("Last Connected Session", layout.SessionName(0));
  writer.String("Last Session Folder", layout.LeafPath(0));
  writer.String("Last Import File", "C:\\Users\\Public\\Documents\\sessions-export.xml");
  writer.String("Last Export File", "");
  writer.String("Installation Id", Guid(random));
  writer.String("Machine Id", Guid(random));
  writer.String("Product Version", "9.4.2.117");
  writer.String("License Owner",
                random.Chance(50) ? "Example Corp." : "Soci\xC3\xA9t\xC3\xA9 G\xC3\xA9n\xC3\xA9rale d'Exemple");
  writer.String("Configuration Passphrase Hash", "03:" + HexText(random, 64));
  writer.String("Agent Socket Name", "cfgdeck-agent");
  writer.String("Sound File Connect", "");
  writer.String("Sound File Disconnect", "");
  writer.String("Toolbar Layout Name", "Standard");

  writer.Binary("Window Placement", WindowPlacement(random));
  writer.Binary("Normal Font v2", Font(random));
  writer.Binary("Narrow Font v2", Font(random));
  writer.Binary("Dialog Font v2", Font(random));
  writer.Binary("Printer Font v2", Font(random));
  writer.Binary("Session Manager Font v2", Font(random));
  for (std::string_view dialog : kDialogs) writer.Binary(std::string(dialog) + " Placement", WindowPlacement(random));
  writer.Binary("Custom Colors Data", ColorTable(random));
  writer.Binary("Toolbar State", RandomBytes(random, 180));
  writer.Binary("Session Manager Tree State", RandomBytes(random, 333));
  writer.Binary("License Data", RandomBytes(random, 128));
  writer.Binary("Reserved", {});

  std::vector<std::string> recent;
  const std::uint32_t recentCount = settings.sessions == 0 ? 0 : random.Between(5, 20);
  for (std::uint32_t i = 0; i < recentCount; ++i)
    recent.push_back(layout.SessionPath(static_cast<int>(random.Below(settings.sessions))));
  writer.MultiString("Recent Sessions", recent);
  writer.MultiString("Recent Files",
                     {"C:\\Users\\Public\\Documents\\notes.txt", "C:\\Users\\Public\\Scripts\\deploy.py"});
  std::vector<std::string> history;
  const std::uint32_t historyCount = random.Between(20, 60);
  for (std::uint32_t i = 0; i < historyCount; ++i) {
    history.push_back(
        std::string(random.Pick({"ls -la", "cd /var/log", "tail -f syslog", "sudo systemctl restart nginx", "df -h",
                                 "top", "git pull", "uptime", "journalctl -xe"})));
  }
  writer.MultiString("Command History", history);
  writer.MultiString("Find History", {"error", "timeout",
                                      "\xC3\xA9"
                                      "chec",
                                      "panic"});
  writer.MultiString("Quick Connect History", {"web01.prod.example.com", "10.0.0.12", "db02.stage.example.com"});
  writer.MultiString("Toolbar Buttons",
                     {"Connect", "Quick Connect", "Reconnect", "Disconnect", "|", "Copy", "Paste", "Find", "|", "Print",
                      "Session Options", "Global Options", "|", "SFTP", "Key Generation", "Help"});
  writer.MultiString("Plugin Paths", {"C:\\Program Files\\Plugins\\zmodem.dll"});
  writer.MultiString("Trusted Host Key Fingerprints",
                     {"SHA256:" + Base64Text(random, 43), "SHA256:" + Base64Text(random, 43)});
  writer.MultiString("Disabled Warnings", {});
  writer.MultiString("Keyword Sets", {"Errors and Warnings", "Network", "Build Output"});
  return writer;
}

void WriteFolders(const NConfigFolderSpec& settings, const fs::path& folder, const std::string& name, int level,
                  std::uint64_t& ordinal, NConfigFolderStats& stats) {
  fs::create_directories(folder);
  WriteFile(folder / "__FolderData__.ini", FolderRecords(settings, ordinal++, name), stats);
  ++stats.folders;
  if (level == settings.depth) return;
  for (int i = 0; i < settings.fanout; ++i) {
    const std::string child = FolderName(level, i);
    WriteFolders(settings, folder / child, child, level + 1, ordinal, stats);
  }
}

}  // namespace

NConfigFolderStats NGenerateConfigFolder(const NConfigFolderSpec& settings) {
  const NLayout layout(settings);
  NConfigFolderStats stats;
  const fs::path root(settings.root);
  fs::create_directories(root);
  WriteFile(root / "global.ini", GlobalRecords(settings, layout), stats);

  std::uint64_t ordinal = 0;
  WriteFolders(settings, root / "Sessions", "Sessions", 0, ordinal, stats);

  for (int session = 0; session < settings.sessions; ++session) {
    const fs::path file = root / fs::path(layout.SessionPath(session) + ".ini");
    WriteFile(file, SessionRecords(settings, layout, session), stats);
    ++stats.sessions;
  }
  return stats;
}
