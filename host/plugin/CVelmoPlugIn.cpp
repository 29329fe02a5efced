#include "host/plugin/CVelmoPlugIn.h"

#include "host/plugin/VmModuleObjects.h"
#include "host/ui/VmMessages.h"

#include <exception>

CVelmoPlugIn::CVelmoPlugIn() {
    VmNoteModulePlugIn(this, true);
}

CVelmoPlugIn::~CVelmoPlugIn() {
    VmNoteModulePlugIn(this, false);
}

// Out of line, so that the vtables live in the host's core.
CVelmoFileImportPlugIn::~CVelmoFileImportPlugIn() = default;
CVelmoFileImportSystemPlugIn::~CVelmoFileImportSystemPlugIn() = default;

bool CVelmoFileImportPlugIn::MakeReferenceTableName(const wchar_t* name, GK_wString& result) const {
    if (!name || !*name || m_fileBeingRead.IsEmpty())
        return false;
    GK_wString fname, ext;
    GK_wString::SplitPath(m_fileBeingRead, nullptr, nullptr, &fname, &ext);
    result = GK_wString(fname.str() + ext.str() + L" : " + name);
    return true;
}

int VelmoReadFile(CVelmoFileImportPlugIn& plugIn, const wchar_t* path, int formatIndex,
                  CVelmoDoc& doc, const CVelmoFileReadOptions& options) {
    plugIn.SetFileBeingRead(path);
    int result = 0;
    try {
        result = plugIn.ImportFile(path, formatIndex, doc, options);
    } catch (const std::exception& e) {
        VmMessages().Add("print", L"", L"The import failed: " + VmWideFromBytes(e.what()) + L"\n");
    } catch (...) {
        VmMessages().Add("print", L"", L"The import failed.\n");
    }
    plugIn.SetFileBeingRead(L"");
    return result;
}

bool VelmoShowImportOptions(CVelmoFileImportPlugIn& plugIn, const CVelmoFileType& fileType) {
    try {
        plugIn.ShowImportOptions(nullptr, fileType);
        return true;
    } catch (const std::exception& e) {
        VmMessages().Add("print", L"", L"The options failed: " + VmWideFromBytes(e.what()) + L"\n");
    } catch (...) {
        VmMessages().Add("print", L"", L"The options failed.\n");
    }
    return false;
}
