#include "uicore/PersonalDataFolderDialog.h"

#include <mutex>

#include "uicore/NMessageBox.h"

namespace {

std::mutex g_mutex;  // guards the answer and its context
NPersonalDataFolderAnswer g_answer = nullptr;
void* g_context = nullptr;

}  // namespace

void NSetPersonalDataFolderAnswer(NPersonalDataFolderAnswer answer, void* context) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_answer = answer;
  g_context = context;
}

int PersonalDataFolderDialog::DoModal(void*) {
  NPersonalDataFolderAnswer answer;
  void* context;
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    answer = g_answer;
    context = g_context;
  }
  NUnicodeString chosen = m_folder;
  if (!answer || !answer(context, m_folder.c_str(), m_icon, chosen)) return kMessageBoxIdCancel;
  m_folder = std::move(chosen);
  return kMessageBoxIdOk;
}
