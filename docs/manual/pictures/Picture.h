// Picture: what stands on the screen, for the manual.
#pragma once

#include <string>

#include "os/desktop/Dialog.h"

void SetPictureFolder(const std::string& folder);

// Writes a bitmap file, NAME.bmp, of the shown dialog with its frame.
void Picture(const os::Dialog& dialog, const std::string& name);

// Opens and pictures the dialogs that send commands, the replacer, the bug form and the error window.
void CommandDialogPictures();

// Opens and pictures the Wrenlow window's pages.
void WrenlowPictures();
