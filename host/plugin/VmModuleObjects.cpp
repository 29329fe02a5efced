#include "host/plugin/VmModuleObjects.h"

#include <algorithm>

namespace {

struct Registry {
    VmModuleObjects* loading = nullptr;    // borrowed: the collection of the load under way
    std::vector<VmModuleObjects*> tracked; // borrowed: collections of loaded libraries
};

Registry& TheRegistry() {
    static Registry registry;
    return registry;
}

template <class T> void Note(T* object, bool made, std::vector<T*> VmModuleObjects::*list) {
    Registry& r = TheRegistry();
    if (made) {
        if (r.loading)
            (r.loading->*list).push_back(object);
        return;
    }
    for (VmModuleObjects* objects : r.tracked)
        std::erase(objects->*list, object);
}

} // namespace

VmModuleLoadScope::VmModuleLoadScope(VmModuleObjects& objects) {
    Registry& r = TheRegistry();
    r.loading = &objects;
    if (std::find(r.tracked.begin(), r.tracked.end(), &objects) == r.tracked.end())
        r.tracked.push_back(&objects);
}

VmModuleLoadScope::~VmModuleLoadScope() {
    TheRegistry().loading = nullptr;
}

void VmNoteModuleApp(CWinApp* app, bool made) {
    Note(app, made, &VmModuleObjects::apps);
}

void VmNoteModulePlugIn(CVelmoPlugIn* plugIn, bool made) {
    Note(plugIn, made, &VmModuleObjects::plugIns);
}

void VmForgetModuleObjects(VmModuleObjects& objects) {
    std::erase(TheRegistry().tracked, &objects);
    objects.apps.clear();
    objects.plugIns.clear();
}
