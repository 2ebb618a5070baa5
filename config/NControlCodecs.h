#pragma once

#include <algorithm>

#include "config/NConfigTypes.h"
#include "uicore/NControlValue.h"

// How the records' own types show in the dialogs' controls.

// A password box shows a typed value's text and a stored value's sealed
// form (masked); what a person types is a plain value, sealed on save.
template <>
struct NControlCodec<NEncryptedString> {
  static NControlValue To(const NEncryptedString& value) { return value.IsPlain() ? value.Typed() : value.Stored(); }
  static bool From(const NControlValue& value, NEncryptedString* out) {
    const NUnicodeString* text = std::get_if<NUnicodeString>(&value);
    if (text) *out = NEncryptedString::FromPlain(*text);
    return text != nullptr;
  }
};

// A font control sets face, height, weight and italic, and keeps the rest
// of the stored font as it was.
template <>
struct NControlCodec<NLogFont> {
  static NControlValue To(const NLogFont& font) {
    const auto end = std::find(font.faceName.begin(), font.faceName.end(), u'\0');
    return NControlFont{NUnicodeString(font.faceName.begin(), end), font.height, font.weight, font.italic != 0};
  }
  static bool From(const NControlValue& value, NLogFont* out) {
    const NControlFont* font = std::get_if<NControlFont>(&value);
    if (!font) return false;
    NLogFont made = NLogFont::Make(font->face, font->height, font->weight);
    out->height = made.height;
    out->weight = made.weight;
    out->italic = font->italic ? 1 : 0;
    out->faceName = made.faceName;
    return true;
  }
};
