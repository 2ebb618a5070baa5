#include "uicore/NProgressDialog.h"

#include "uicore/IDialogBackend.h"

namespace {

std::mutex g_mutex;  // guards the observer and its context
NProgressObserver g_observer = nullptr;
void* g_context = nullptr;

}  // namespace

void NSetProgressObserver(NProgressObserver observer, void* context) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_observer = observer;
  g_context = context;
}

void NProgressDialog::Notify(NProgressEvent event) const {
  NProgressObserver observer;
  void* context;
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    observer = g_observer;
    context = g_context;
  }
  if (!observer) return;
  NUnicodeString text;
  std::uint64_t done, total;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    text = m_text;
    done = m_done;
    total = m_total;
  }
  observer(context, event, text.c_str(), done, total);
}

void NProgressDialog::SetText(NUnicodeString text) {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_text = std::move(text);
  }
  Notify(NProgressEvent::kChanged);
}

void NProgressDialog::SetProgress(std::uint64_t done, std::uint64_t total) {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_done = done;
    m_total = total;
  }
  Notify(NProgressEvent::kChanged);
}

void NProgressDialog::PostClose() {
  // Notified under the lock: once Run has returned, the dialog may go.
  std::lock_guard<std::mutex> lock(m_mutex);
  m_closePosted = true;
  m_closed.notify_all();
}

void NProgressDialog::Run(void* parent) {
  Notify(NProgressEvent::kShown);
  NDialogBackend().RunProgress(*this, parent);
  WaitForClose();  // a backend's window may close before the worker says so
  Notify(NProgressEvent::kClosed);
}

void NProgressDialog::WaitForClose() {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_closed.wait(lock, [this] { return m_closePosted; });
}

bool NProgressDialog::IsClosePosted() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_closePosted;
}

NUnicodeString NProgressDialog::Text() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_text;
}

std::uint64_t NProgressDialog::Done() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_done;
}

std::uint64_t NProgressDialog::Total() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_total;
}
