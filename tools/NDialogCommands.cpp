#include "tools/NDialogCommands.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cstdio>

#include "base/NUnknownPointer.h"
#include "config/NConfigEntry.h"
#include "config/NSessionPath.h"
#include "dialogs/DemoOptionsDialog.h"
#include "dialogs/global/GlobalOptionsDialog.h"
#include "dialogs/session/SessionConnectPage.h"
#include "dialogs/session/SessionOptionsDialog.h"
#include "tools/NToolInstallation.h"
#include "tools/NToolOutput.h"
#include "uicore/NHeadlessDialogBackend.h"

namespace {

const char* KindName(NControlKind kind) {
  switch (kind) {
    case NControlKind::kCheckBox:
      return "check box";
    case NControlKind::kNumber:
      return "number";
    case NControlKind::kText:
      return "text";
    case NControlKind::kPassword:
      return "password";
    case NControlKind::kChoice:
      return "choice";
    case NControlKind::kRadioGroup:
      return "radio group";
    case NControlKind::kColor:
      return "colour";
    case NControlKind::kFont:
      return "font";
    case NControlKind::kFile:
      return "file";
    case NControlKind::kFolder:
      return "folder";
    case NControlKind::kStringList:
      return "string list";
    case NControlKind::kButton:
      return "button";
    case NControlKind::kGroupBox:
      return "group box";
    case NControlKind::kLabel:
      return "label";
    case NControlKind::kSampleTabs:
      return "sample tabs";
  }
  return "control";
}

bool ParseInt(std::string_view text, int base, std::int64_t* out) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *out, base);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t at; (at = text.find(separator, start)) != std::string::npos; start = at + 1) {
    parts.push_back(text.substr(start, at - start));
  }
  parts.push_back(text.substr(start));
  return parts;
}

// A control's value from the command line: true/false, a number, a choice
// by its label, #RRGGBB, "Face,height[,weight[,italic]]", "a;b;c", or text.
bool ParseValue(const NFormControl& control, const std::string& text, NControlValue* out) {
  const NUnicodeString wide = NUnicodeString::FromUtf8(text);
  for (const NChoiceItem& item : control.ChoiceItems()) {
    if (item.label == wide || NDescribeControlValue(item.value) == wide) {
      *out = item.value;
      return true;
    }
  }
  std::int64_t number = 0;
  switch (control.Kind()) {
    case NControlKind::kCheckBox:
      if (text != "true" && text != "false") return false;
      *out = text == "true";
      return true;
    case NControlKind::kNumber:
    case NControlKind::kChoice:
    case NControlKind::kRadioGroup:
      if (!ParseInt(text, 10, &number)) return false;
      *out = number;
      return true;
    case NControlKind::kColor:
      if (text.size() != 7 || text[0] != '#' || !ParseInt(std::string_view(text).substr(1), 16, &number)) return false;
      *out = std::int64_t{((number & 0xFF) << 16) | (number & 0xFF00) | ((number >> 16) & 0xFF)};
      return true;
    case NControlKind::kFont: {
      const std::vector<std::string> parts = Split(text, ',');
      NControlFont font{NUnicodeString::FromUtf8(parts[0]), 0, 400, false};
      std::int64_t height = 0, weight = 400;
      if (parts.size() < 2 || parts.size() > 4 || !ParseInt(parts[1], 10, &height)) return false;
      if (parts.size() >= 3 && !ParseInt(parts[2], 10, &weight)) return false;
      if (parts.size() == 4 && parts[3] != "italic") return false;
      font.height = static_cast<std::int32_t>(height);
      font.weight = static_cast<std::int32_t>(weight);
      font.italic = parts.size() == 4;
      *out = font;
      return true;
    }
    case NControlKind::kStringList: {
      NStringArray list;
      if (!text.empty()) {
        for (const std::string& item : Split(text, ';')) list.push_back(NUnicodeString::FromUtf8(item));
      }
      *out = list;
      return true;
    }
    default:
      *out = wide;
      return true;
  }
}

const char* Refusal(NEditResult result) {
  switch (result) {
    case NEditResult::kLocked:
      return "a policy locks it";
    case NEditResult::kDisabled:
      return "it is disabled";
    case NEditResult::kOutOfRange:
      return "the number is out of its range";
    case NEditResult::kNotAChoice:
      return "it is not one of its choices";
    case NEditResult::kNoValue:
      return "it holds no value";
    default:
      return "the value is not of its kind";
  }
}

std::string Shown(const NFormControl& control) {
  const NControlValue& value = control.Value();
  for (const NChoiceItem& item : control.ChoiceItems()) {
    if (item.value == value) return item.label.ToUtf8();
  }
  const std::int64_t* number = std::get_if<std::int64_t>(&value);
  if (control.Kind() == NControlKind::kColor && number) {
    char rgb[8];
    std::snprintf(rgb, sizeof rgb, "#%02X%02X%02X", static_cast<unsigned>(*number & 0xFF),
                  static_cast<unsigned>((*number >> 8) & 0xFF), static_cast<unsigned>((*number >> 16) & 0xFF));
    return rgb;
  }
  const NUnicodeString* text = std::get_if<NUnicodeString>(&value);
  if (control.Kind() == NControlKind::kPassword && text && !text->empty()) return "********";
  return NDescribeControlValue(value).ToUtf8();
}

std::string PlainText(const NPropertyTreeDialog& dialog) {
  std::string text;
  for (const NPropertyTreeDialog::Row& row : dialog.VisibleRows()) {
    const std::string indent(static_cast<std::size_t>(row.depth) * 2, ' ');
    text += indent + row.page->Title().ToUtf8() + "\n";
    for (const auto& control : row.page->Form().Controls()) {
      // Appended piece by piece: g++ -O3 takes "[" + label for an overlap.
      text += indent;
      text += "  ";
      if (!control->HasValue()) {
        text += '[';
        text += control->Label().ToUtf8();
        text += "]\n";
        continue;
      }
      text += control->Label().ToUtf8();
      text += " = ";
      text += Shown(*control);
      if (control->IsChanged()) text += " (changed)";
      if (control->IsModifiedFromDefault()) text += " (not the default)";
      if (auto reason = control->LockReason()) {
        text += " (locked: ";
        text += reason->ToUtf8();
        text += ')';
      } else if (!control->IsEnabled()) {
        text += " (disabled)";
      }
      text += "\n";
    }
  }
  return text;
}

std::string JsonText(const NPropertyTreeDialog& dialog) {
  nlohmann::ordered_json pages = nlohmann::ordered_json::array();
  for (const NPropertyTreeDialog::Row& row : dialog.VisibleRows()) {
    nlohmann::ordered_json controls = nlohmann::ordered_json::array();
    for (const auto& control : row.page->Form().Controls()) {
      nlohmann::ordered_json item{{"label", control->Label().ToUtf8()}, {"kind", KindName(control->Kind())}};
      if (control->HasValue()) {
        item["value"] = Shown(*control);
        item["changed"] = control->IsChanged();
        item["default"] = !control->IsModifiedFromDefault();
        item["enabled"] = control->IsEnabled();
        item["highlighted"] = control->IsHighlighted();
        if (auto reason = control->LockReason()) item["locked"] = reason->ToUtf8();
      }
      controls.push_back(std::move(item));
    }
    pages.push_back({{"title", row.page->Title().ToUtf8()}, {"depth", row.depth}, {"controls", std::move(controls)}});
  }
  return nlohmann::ordered_json{{"title", dialog.Title().ToUtf8()}, {"pages", std::move(pages)}}.dump(2) + "\n";
}

// Message boxes go to stderr; their default button answers.
int PrintMessageBox(void*, const char16_t* text, const char16_t*, unsigned style) {
  NErr(NUnicodeString(text).ToUtf8() + "\n");
  return (style & kMessageBoxButtonsMask) == kMessageBoxYesNo ? kMessageBoxIdYes : kMessageBoxIdOk;
}

}  // namespace

NDialogCommands::NDialogCommands(const std::string& folder, const std::string& appName) : m_store(folder, appName) {}

bool NDialogCommands::Drive(NPropertyTreeDialog& dialog, const Request& request, std::string* error) {
  for (const std::string& set : request.sets) {
    const std::size_t slash = set.find('/'), equals = set.find('=', slash);  // checked by Global
    const std::string page = set.substr(0, slash), label = set.substr(slash + 1, equals - slash - 1);
    NPropertyTreePage* found = dialog.FindPage(NUnicodeString::FromUtf8(page));
    if (!found || !dialog.SelectPage(found)) {
      *error = "no page '" + page + "' is shown";
      return false;
    }
    NFormControl* control = found->Form().Find(NUnicodeString::FromUtf8(label));
    if (!control) {
      *error = "the page '" + page + "' has no control '" + label + "'";
      return false;
    }
    NControlValue value;
    const NEditResult result =
        ParseValue(*control, set.substr(equals + 1), &value) ? control->SetValue(value) : NEditResult::kWrongKind;
    if (result != NEditResult::kDone && result != NEditResult::kUnchanged) {
      *error = "'" + page + "/" + label + "' was not set: " + Refusal(result);
      return false;
    }
  }
  if (!request.search.empty()) dialog.SetSearch(NUnicodeString::FromUtf8(request.search));
  if ((request.ok && !dialog.PressOk()) || (request.apply && !dialog.PressApply())) {
    *error = "the dialog refused " + std::string(request.ok ? "OK" : "Apply");
    return false;
  }
  return true;
}

int NDialogCommands::Global(const Request& request) {
  for (const std::string& set : request.sets) {
    const std::size_t slash = set.find('/');
    if (slash == std::string::npos || set.find('=', slash) == std::string::npos) {
      NErr("cfgdeck dialog: '" + set + "' is not PAGE/LABEL=VALUE\n");
      return kExitUsage;
    }
  }
  GlobalConfig* config = nullptr;
  GetGlobalConfig(config, -1);
  DemoOptionsDialog dialog(*config, NReadPolicy());
  NHeadlessDialogBackend backend;
  NScopedDialogBackend installed(backend);
  NSetMessageBoxHandler(&PrintMessageBox, nullptr);
  std::string error;
  backend.SetScript([&](NPropertyTreeDialog& running) {
    if (!Drive(running, request, &error)) return;
    // Every page is printed, shown yet or not.
    for (const NPropertyTreeDialog::Row& row : running.VisibleRows()) {
      if (!row.page->Form().IsLoaded()) row.page->Form().Load();
    }
    NOut(request.json ? JsonText(running) : PlainText(running));
  });
  dialog.DoModal();
  NSetMessageBoxHandler(nullptr, nullptr);
  if (!error.empty()) {
    NErr("cfgdeck dialog: " + error + "\n");
    return kExitFailure;
  }
  return kExitSuccess;
}

namespace {

// A message's text on one line: its line breaks as \r and \n.
std::string OneLine(const NUnicodeString& text) {
  std::string line;
  for (const char c : text.ToUtf8()) {
    if (c == '\r') {
      line += "\\r";
    } else if (c == '\n') {
      line += "\\n";
    } else {
      line += c;
    }
  }
  return line;
}

std::string Structure(const NPropertyTreeDialog& dialog) {
  std::string text = "title\t" + OneLine(dialog.Title()) + "\n";
  text += std::string("ok\t") + (dialog.IsOkEnabled() ? "enabled" : "disabled") + "\n";
  for (const NPropertyTreeDialog::Row& row : dialog.AllRows()) {
    text += "page\t" + std::to_string(row.depth) + "\t" + row.page->Title().ToUtf8() + "\t" +
            (dialog.IsPageShown(row.page) ? "shown" : "hidden") + "\n";
  }
  for (const NShownMessageBox& shown : NShownMessageBoxes()) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%08x", static_cast<unsigned>(shown.code));
    text += std::string("message\t") + code + "\t" + OneLine(shown.text) + "\n";
  }
  return text;
}

}  // namespace

int NDialogCommands::Session(const SessionRequest& request) {
  std::string error;
  if (request.installed && !NSetToolInstallation(*request.installed, &error)) {
    NErr("cfgdeck dialog: " + error + "\n");
    return kExitUsage;
  }
  const NUnicodeString path = NSessionPathFromUtf8(request.path.empty() ? "Default" : request.path);
  NReportMessageParams params;
  const auto session =
      NUnknownPointer<ISessionConfig>::Adopt(NOpenSession(path, request.mode == kSessionDialogLocked, params));
  if (!session) {
    NErr("cfgdeck dialog: " + params.GetText().ToUtf8());
    return kExitFailure;
  }
  GlobalConfig* global = nullptr;
  GetGlobalConfig(global, -1);
  NHeadlessDialogBackend backend;
  NScopedDialogBackend installed(backend);
  NClearShownMessageBoxes();
  bool fontsChanged = false;
  {
    SessionOptionsDialog dialog(global, session.Get(),
                                request.mode.value_or(request.path.empty() ? kSessionDialogDefault : 0), false, true, 0,
                                false, 0, false, fontsChanged, nullptr);
    backend.SetScript([&](NPropertyTreeDialog& running) {
      NPropertyTreePage* connect = running.FindPage(u"Connection");
      for (const auto& [terminal, name] : request.protocols) {
        const std::u16string_view label =
            terminal ? SessionConnectPage::kProtocolLabel : SessionConnectPage::kTransferProtocolLabel;
        NFormControl* control = connect ? connect->Form().Find(label) : nullptr;
        if (!control) {
          error = "the Connection page offers no " + NUnicodeString(label).ToUtf8() + " here";
          return;
        }
        const NEditResult result = control->SetValue(NUnicodeString::FromUtf8(name));
        if (result != NEditResult::kDone && result != NEditResult::kUnchanged) {
          error = "'" + name + "' was not chosen: " + Refusal(result);
          return;
        }
      }
      NOut(Structure(running));
    });
    dialog.DoModal();
  }
  if (!error.empty()) {
    NErr("cfgdeck dialog: " + error + "\n");
    return kExitFailure;
  }
  return kExitSuccess;
}

namespace {

// The tool keeps no file-type register: an empty one in memory, so that the
// page shows as in a host that has one.
class NToolFileTypes final : public NFileTypeManager, public NIconManager {
 public:
  NStringArray Associations() const override { return m_lines; }
  bool SetAssociations(const NStringArray& lines) override {
    m_lines = lines;
    return true;
  }
  void Invalidate(std::u16string_view) override {}

 private:
  NStringArray m_lines;
};

}  // namespace

int NDialogCommands::GlobalOptions(const GlobalRequest& request) {
  std::string error;
  if (request.installed && !NSetToolInstallation(*request.installed, &error)) {
    NErr("cfgdeck dialog: " + error + "\n");
    return kExitUsage;
  }
  SetCurrentAppProductID(request.productId);
  GlobalConfig* global = nullptr;
  GetGlobalConfig(global, -1);
  NHeadlessDialogBackend backend;
  NScopedDialogBackend installed(backend);
  NClearShownMessageBoxes();
  NToolFileTypes fileTypes;
  NGlobalDialogInputs inputs;
  if (!request.noFileTypes) {
    inputs.fileTypes = &fileTypes;
    inputs.icons = &fileTypes;
  }
  GlobalOptionsDialog dialog(global, inputs, nullptr);
  backend.SetScript([&](NPropertyTreeDialog& running) { NOut(Structure(running)); });
  dialog.DoModal();
  return kExitSuccess;
}
