#pragma once
// What a library makes of the framework while it is being loaded. Its application object and
// its plug-in object are globals of the library, made by the library's static initialisation
// inside dlopen; their base constructors note them here, which is how the loader finds them
// without trusting anything else of the library. Objects made while no load is under way (a
// plug-in class linked into a program) are not collected.
#include <vector>

class CWinApp;
class CVelmoPlugIn;

struct VmModuleObjects {
    std::vector<CWinApp*> apps;         // borrowed: owned by the library
    std::vector<CVelmoPlugIn*> plugIns; // borrowed: owned by the library
};

// Collects, for its lifetime, the objects made (and forgets those destroyed) into `objects`.
// Objects destroyed later, when the library is unloaded, are also taken out of it, so that
// the collection never holds a dangling pointer. Scopes do not nest.
class VmModuleLoadScope {
public:
    explicit VmModuleLoadScope(VmModuleObjects& objects);
    ~VmModuleLoadScope();
    VmModuleLoadScope(const VmModuleLoadScope&) = delete;
    VmModuleLoadScope& operator=(const VmModuleLoadScope&) = delete;
};

// Called by the base constructors (`made` true) and destructors (`made` false).
void VmNoteModuleApp(CWinApp* app, bool made);
void VmNoteModulePlugIn(CVelmoPlugIn* plugIn, bool made);

// Stops tracking `objects`; the loader calls it once the library is unloaded.
void VmForgetModuleObjects(VmModuleObjects& objects);
