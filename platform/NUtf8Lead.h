#pragma once

// What a well-formed UTF-8 sequence led by byte `c` must look like: its
// length, and the range its second byte falls in (narrower than 80-BF after
// E0, ED, F0 and F4, which rules out overlong forms, surrogates and code
// points above U+10FFFF). False for a byte that leads no sequence. Shared by
// the validator and the decoders of every system, so that they agree.
struct NUtf8Lead {
  int length = 0;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
};

inline bool NUtf8LeadOf(unsigned char c, NUtf8Lead* lead) {
  *lead = NUtf8Lead();
  if (c >= 0xC2 && c <= 0xDF) {
    lead->length = 2;
  } else if (c >= 0xE0 && c <= 0xEF) {
    lead->length = 3;
    if (c == 0xE0) lead->low = 0xA0;
    if (c == 0xED) lead->high = 0x9F;
  } else if (c >= 0xF0 && c <= 0xF4) {
    lead->length = 4;
    if (c == 0xF0) lead->low = 0x90;
    if (c == 0xF4) lead->high = 0x8F;
  } else {
    return false;
  }
  return true;
}
