#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/NExport.h"
#include "base/NUnicodeString.h"

// The shared UI module's message box, shown by the dialog backend
// (IDialogBackend). Headless, a message goes to the handler the host
// installed (the command-line tool prints it), which answers with the
// button pressed; without a handler the default button answers. The latest
// messages are kept for inspection, whichever backend showed them.

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
// The same for message `code` of a message table, kept with the message in
// the record of shown messages.
CFGDECK_API int NMessageBox(void* parent, std::uint32_t code, std::u16string_view text, std::u16string_view caption,
                            unsigned style);

// A message box with a "do not display this message again" check box,
// unticked at first; *dontShowAgain (may be null) tells whether it was
// ticked. Returns the button pressed.
CFGDECK_API int NShowOptionalMessageBox(void* parent, std::u16string_view text, std::u16string_view caption,
                                        unsigned style, bool* dontShowAgain);
CFGDECK_API int NShowOptionalMessageBox(void* parent, std::uint32_t code, std::u16string_view text,
                                        std::u16string_view caption, unsigned style, bool* dontShowAgain);

// The same, with the check box bound to `suppress`, a record's boolean or
// integer field: ticking it sets the field (to true, or 1), which callers
// test before showing the message again.
template <typename Field>
int ShowOptionalMessageBox(void* parent, std::uint32_t code, std::u16string_view text, std::u16string_view caption,
                           unsigned style, Field& suppress) {
  bool ticked = false;
  const int result = NShowOptionalMessageBox(parent, code, text, caption, style, &ticked);
  if (ticked) suppress.Set(1);
  return result;
}
template <typename Field>
int ShowOptionalMessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style,
                           Field& suppress) {
  return ShowOptionalMessageBox(parent, 0, text, caption, style, suppress);
}

// The answer of the host's handler (NSetMessageBoxHandler), or the default
// button without one: how a backend without windows answers.
int NAskMessageBoxHandler(std::u16string_view text, std::u16string_view caption, unsigned style);

// One message as shown.
struct NShownMessageBox {
  std::uint32_t code = 0;  // 0: a text of no message table
  NUnicodeString text;
  NUnicodeString caption;
  unsigned style = 0;
  int result = 0;
};

// The latest messages shown (at most kShownMessageBoxLimit), oldest first.
inline constexpr std::size_t kShownMessageBoxLimit = 32;
std::vector<NShownMessageBox> NShownMessageBoxes();
void NClearShownMessageBoxes();
