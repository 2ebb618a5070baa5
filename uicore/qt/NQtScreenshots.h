#pragma once

#include <string>

class NPropertyTreeDialog;

// Saves a picture of every page `dialog` shows, in tree order, as
// `folder`/NN-Page-Title.png: NN is the page's position from 01, and
// spaces and slashes in its title become '-'. The dialog is opened as for
// DoModal (its OnInitDialog runs), in a window that is not modal, each page
// is selected in turn, and the dialog is cancelled. Works on Qt's
// offscreen platform. The folder is made if missing.
//
// Needs a QApplication; GUI thread. False, with *error (may be null), when
// the folder cannot be made, the dialog shows no page, a page refused to be
// shown or a picture could not be written; the other pictures are saved.
bool NQtSaveScreenshots(NPropertyTreeDialog& dialog, const std::string& folder, std::string* error);
