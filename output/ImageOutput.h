#pragma once
// Temporary files for images.
#include "host/base/GK_String.h"

// A fresh path in the host's temporary folder, "PDF<process id>_<counter>" with `extension`
// (".jpg" or ".png"); the folder is created when it is missing.
void MakeTempImagePath(GK_wString& path, const wchar_t* extension);
