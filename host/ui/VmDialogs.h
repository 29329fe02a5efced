#pragma once
// Message boxes, the plug-in options warning, and callbacks that the host runs by name.
#include "host/ui/CVmParameterDictionary.h"

#include <functional>
#include <string>

// Modal box; returns 1 (OK). The flags say which icon and buttons (48: warning icon).
int VelmoMessageBox(const wchar_t* text, const wchar_t* title, unsigned flags);

// Tells the user how to get an options dialog back after "do not show again"; `text`
// names the file format.
void VmPluginOptionIOWarningDialog(const wchar_t* text, bool showAlways);

using VmNamedCallback = std::function<void(CVmParameterDictionary&)>;
// Registers a callback under a name, ahead of any built-in one; an empty function removes
// the registration, so a built-in callback answers again.
void VmRegisterNamedCallback(const std::wstring& name, VmNamedCallback callback);
// Runs the callback registered under the name with the dictionary in and out; false when
// none is registered. "ShowImportPDFDialog" is built in: it answers from the UI driver.
bool VmExecuteNamedCallback(const wchar_t* name, CVmParameterDictionary& dictionary);
