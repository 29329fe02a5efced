#pragma once
// The plug-in's own resources (its string table) and the module instance they are registered
// under with the host.

// The module instance of the plug-in; its first use registers the string table.
void* QuillonModuleInstance();
