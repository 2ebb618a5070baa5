#include "uicore/NMessageBox.h"

#include <deque>
#include <mutex>

#include "uicore/IDialogBackend.h"

namespace {

std::mutex g_mutex;  // guards everything below
NMessageBoxHandler g_handler = nullptr;
void* g_context = nullptr;
std::deque<NShownMessageBox> g_shown;

int DefaultButton(unsigned style) {
  return (style & kMessageBoxButtonsMask) == kMessageBoxYesNo ? kMessageBoxIdYes : kMessageBoxIdOk;
}

bool IsButtonOf(unsigned style, int button) {
  switch (style & kMessageBoxButtonsMask) {
    case kMessageBoxOkCancel:
      return button == kMessageBoxIdOk || button == kMessageBoxIdCancel;
    case kMessageBoxYesNo:
      return button == kMessageBoxIdYes || button == kMessageBoxIdNo;
    default:
      return button == kMessageBoxIdOk;
  }
}

}  // namespace

void NSetMessageBoxHandler(NMessageBoxHandler handler, void* context) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_handler = handler;
  g_context = context;
}

int NAskMessageBoxHandler(std::u16string_view text, std::u16string_view caption, unsigned style) {
  NMessageBoxHandler handler;
  void* context;
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    handler = g_handler;
    context = g_context;
  }
  // The handler runs unlocked: it may take its time, or show another message.
  if (!handler) return DefaultButton(style);
  const NUnicodeString textZ(text), captionZ(caption);
  return handler(context, textZ.c_str(), captionZ.c_str(), style);
}

namespace {

int Record(std::uint32_t code, std::u16string_view text, std::u16string_view caption, unsigned style, int answer) {
  const int result = IsButtonOf(style, answer) ? answer : DefaultButton(style);
  std::lock_guard<std::mutex> lock(g_mutex);
  g_shown.push_back({code, NUnicodeString(text), NUnicodeString(caption), style, result});
  if (g_shown.size() > kShownMessageBoxLimit) g_shown.pop_front();
  return result;
}

}  // namespace

int NMessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style) {
  return NMessageBox(parent, 0, text, caption, style);
}

int NMessageBox(void* parent, std::uint32_t code, std::u16string_view text, std::u16string_view caption,
                unsigned style) {
  return Record(code, text, caption, style, NDialogBackend().MessageBox(parent, text, caption, style));
}

int NShowOptionalMessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style,
                            bool* dontShowAgain) {
  return NShowOptionalMessageBox(parent, 0, text, caption, style, dontShowAgain);
}

int NShowOptionalMessageBox(void* parent, std::uint32_t code, std::u16string_view text, std::u16string_view caption,
                            unsigned style, bool* dontShowAgain) {
  bool ticked = false;
  const int answer = NDialogBackend().OptionalMessageBox(parent, text, caption, style, &ticked);
  if (dontShowAgain) *dontShowAgain = ticked;
  return Record(code, text, caption, style, answer);
}

std::vector<NShownMessageBox> NShownMessageBoxes() {
  std::lock_guard<std::mutex> lock(g_mutex);
  return std::vector<NShownMessageBox>(g_shown.begin(), g_shown.end());
}

void NClearShownMessageBoxes() {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_shown.clear();
}
