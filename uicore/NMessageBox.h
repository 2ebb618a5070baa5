#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/NExport.h"
#include "base/NUnicodeString.h"

// The shared UI module's message box. The library runs headless: a message
// goes to the handler the host installed (the command-line tool prints it),
// which answers with the button pressed; without a handler the default
// button answers. The latest messages are kept for inspection.

// Styles: one button set, or'ed with at most one icon (the system's values).
inline constexpr unsigned kMessageBoxOk = 0x0;
inline constexpr unsigned kMessageBoxOkCancel = 0x1;
inline constexpr unsigned kMessageBoxYesNo = 0x4;
inline constexpr unsigned kMessageBoxIconError = 0x10;
inline constexpr unsigned kMessageBoxIconQuestion = 0x20;
inline constexpr unsigned kMessageBoxIconWarning = 0x30;
inline constexpr unsigned kMessageBoxIconInformation = 0x40;
inline constexpr unsigned kMessageBoxButtonsMask = 0xF;
inline constexpr unsigned kMessageBoxIconMask = 0xF0;

// The buttons a message box returns.
inline constexpr int kMessageBoxIdOk = 1;
inline constexpr int kMessageBoxIdCancel = 2;
inline constexpr int kMessageBoxIdYes = 6;
inline constexpr int kMessageBoxIdNo = 7;

// Answers a message box: returns the button pressed. Called on the thread
// that shows the message.
using NMessageBoxHandler = int (*)(void* context, const char16_t* text, const char16_t* caption, unsigned style);

// Installs the host's handler (null: the default button answers). Thread-safe.
CFGDECK_EXTERN_C void NSetMessageBoxHandler(NMessageBoxHandler handler, void* context);

// Shows `text` under `caption` with `style`, modal to `parent` (may be null);
// returns the button pressed. An answer that is not one of the style's
// buttons counts as its default button (OK, or Yes). Thread-safe.
CFGDECK_API int NMessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style);

// One message as shown.
struct NShownMessageBox {
  NUnicodeString text;
  NUnicodeString caption;
  unsigned style = 0;
  int result = 0;
};

// The latest messages shown (at most kShownMessageBoxLimit), oldest first.
inline constexpr std::size_t kShownMessageBoxLimit = 32;
std::vector<NShownMessageBox> NShownMessageBoxes();
void NClearShownMessageBoxes();
