#include "uicore/NMessageBox.h"

#include <deque>
#include <mutex>

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

int NMessageBox(void*, std::u16string_view text, std::u16string_view caption, unsigned style) {
  NShownMessageBox shown{NUnicodeString(text), NUnicodeString(caption), style, DefaultButton(style)};
  NMessageBoxHandler handler;
  void* context;
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    handler = g_handler;
    context = g_context;
  }
  // The handler runs unlocked: it may take its time, or show another message.
  if (handler) {
    const int answer = handler(context, shown.text.c_str(), shown.caption.c_str(), style);
    if (IsButtonOf(style, answer)) shown.result = answer;
  }
  const int result = shown.result;
  std::lock_guard<std::mutex> lock(g_mutex);
  g_shown.push_back(std::move(shown));
  if (g_shown.size() > kShownMessageBoxLimit) g_shown.pop_front();
  return result;
}

std::vector<NShownMessageBox> NShownMessageBoxes() {
  std::lock_guard<std::mutex> lock(g_mutex);
  return std::vector<NShownMessageBox>(g_shown.begin(), g_shown.end());
}

void NClearShownMessageBoxes() {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_shown.clear();
}
