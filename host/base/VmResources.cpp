#include "host/base/VmResources.h"

#include <map>
#include <utility>

namespace {
std::map<void*, std::pair<const VmResourceString*, int>>& Tables() {
    static std::map<void*, std::pair<const VmResourceString*, int>> tables;
    return tables;
}
} // namespace

void VmRegisterStringTable(void* instance, const VmResourceString* table, int count) {
    Tables()[instance] = {table, count};
}

void VmForgetStringTables(bool (*inModule)(const void* address, const void* module),
                          const void* module) {
    std::erase_if(Tables(), [&](const auto& entry) {
        return inModule(entry.first, module) || inModule(entry.second.first, module);
    });
}

const wchar_t* VmFindResourceString(void* instance, unsigned int id) {
    const auto it = Tables().find(instance);
    if (it == Tables().end())
        return nullptr;
    for (int i = 0; i < it->second.second; ++i)
        if (it->second.first[i].id == id)
            return it->second.first[i].text;
    return nullptr;
}

const wchar_t* VmLocalizeString(const wchar_t* english, int /*contextId*/) {
    return english;
}
