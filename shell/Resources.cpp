// The plug-in's own string table: the texts of the PDF layer's status codes, under ids equal
// to the codes.
#include "pdf/token/PDFErrorList.h"

#include "shell/Resources.h"

#include "host/base/VmResources.h"

namespace {

#define TARQUIL_WIDEN2(x) L##x
#define TARQUIL_WIDEN(x) TARQUIL_WIDEN2(x)
#define TARQUIL_STRING_ENTRY(code, name, text) {code, TARQUIL_WIDEN(text)},
const VmResourceString kStringTable[] = {PDF_ERROR_LIST(TARQUIL_STRING_ENTRY)};
#undef TARQUIL_STRING_ENTRY

char moduleTag; // its address identifies the module

} // namespace

void* QuillonModuleInstance() {
    static const bool registered = [] {
        VmRegisterStringTable(&moduleTag, kStringTable,
                              static_cast<int>(sizeof kStringTable / sizeof kStringTable[0]));
        return true;
    }();
    (void)registered;
    return &moduleTag;
}
