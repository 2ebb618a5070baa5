#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "base/NExport.h"
#include "base/NUnicodeString.h"

// What a progress dialog tells the host's observer.
enum class NProgressEvent {
  kShown,    // Run began
  kChanged,  // the text or the counts changed
  kClosed,   // Run is about to return
};

// Watches progress dialogs for a host without windows (the command-line
// tool draws a bar from it). Called on the thread that caused the event,
// with no lock held.
using NProgressObserver = void (*)(void* context, NProgressEvent event, const char16_t* text, std::uint64_t done,
                                   std::uint64_t total);

// Installs the host's observer (null: none). Thread-safe.
CFGDECK_EXTERN_C void NSetProgressObserver(NProgressObserver observer, void* context);

// The shared UI module's modal progress dialog without a cancel button: the
// UI thread runs it while a worker does the job, reports progress and ends
// it with PostClose. The dialog backend shows it; headless, Run waits for
// PostClose. Every operation but Run may come from any thread.
class NProgressDialog {
 public:
  explicit NProgressDialog(NUnicodeString text) : m_text(std::move(text)) {}
  NProgressDialog(const NProgressDialog&) = delete;
  NProgressDialog& operator=(const NProgressDialog&) = delete;

  void SetText(NUnicodeString text);
  // `done` of `total` steps.
  void SetProgress(std::uint64_t done, std::uint64_t total);
  // Asks the dialog to end; Run returns once it has. A close posted before
  // Run makes Run return at once.
  void PostClose();

  // Shows the dialog modally to `parent` (may be null) until PostClose.
  void Run(void* parent = nullptr);

  // For backends: blocks until PostClose; whether it came.
  void WaitForClose();
  bool IsClosePosted() const;

  NUnicodeString Text() const;
  std::uint64_t Done() const;
  std::uint64_t Total() const;

 private:
  void Notify(NProgressEvent event) const;

  mutable std::mutex m_mutex;  // guards the members below
  std::condition_variable m_closed;
  NUnicodeString m_text;
  std::uint64_t m_done = 0;
  std::uint64_t m_total = 0;
  bool m_closePosted = false;
};
