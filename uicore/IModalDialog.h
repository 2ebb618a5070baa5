#pragma once

// A modal dialog as its logic sees it: something it can close with a
// result. The window toolkit supplies it; tests record the calls.
class IModalDialog {
 public:
  static constexpr int kOk = 1;
  static constexpr int kCancel = 2;

  virtual ~IModalDialog() = default;

  // Ends the dialog's modal loop, which then returns `result`.
  virtual void EndDialog(int result) = 0;
};
