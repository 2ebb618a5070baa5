#pragma once

class NPropertyTreePage;
class NPropertyPageStateMap;

// The page container as other modules see it (a protocol module adds its
// options page through this). Pages are owned by whoever made them; the
// dialog only arranges them. UI thread only.
class IPropertyTreeDialog {
 public:
  virtual ~IPropertyTreeDialog() = default;

  // Adds `page` under `parent`, or at the root when `parent` is null, after
  // the pages already there. The page is shown. Adding a page that is
  // already in the tree, or under a page that is not, does nothing.
  virtual void AddPage(NPropertyTreePage* page, NPropertyTreePage* parent = nullptr) = 0;
  // Shows or hides a page with the pages under it; each keeps its own flag.
  virtual void ShowPage(NPropertyTreePage* page) = 0;
  virtual void HidePage(NPropertyTreePage* page) = 0;
  // Takes a page and the pages under it out of the tree.
  virtual void RemovePage(NPropertyTreePage* page) = 0;
  // Bracket a run of changes to the tree: it is redrawn once, at the end.
  virtual void SuspendRedraw() = 0;
  virtual void ResumeRedraw() = 0;

  virtual void SetModified(bool modified) = 0;
  virtual void SetClearSelected(bool clear) = 0;
  virtual void SetNewSession(bool newSession) = 0;
  virtual void DisableOkButton(bool disable) = 0;
  virtual NPropertyPageStateMap* GetPageStateMap() const = 0;
};
