#pragma once
// String tables of loaded modules. A plug-in registers its table under its module instance;
// GK_wString::LoadResourceString reads from it.

struct VmResourceString {
    unsigned int id;
    const wchar_t* text;
};

// Registers (or replaces) the table of a module. The table must outlive the registration.
void VmRegisterStringTable(void* instance, const VmResourceString* table, int count);
// Drops the tables that `inModule` claims (it is given the instance and the table), when the
// module that registered them goes away.
void VmForgetStringTables(bool (*inModule)(const void* address, const void* module),
                          const void* module);
// The text of `id` in the module's table, or null.
const wchar_t* VmFindResourceString(void* instance, unsigned int id);

// Localisation: the host returns the text for the user's language; English is the only one.
const wchar_t* VmLocalizeString(const wchar_t* english, int contextId);
