// The templates are data, laid out as the host draws them, in dialog units.
#include "shell/DialogResources.h"

#include "shell/Resources.h"

namespace {

using K = VmControlKind;

const VmDialogControl kSelectPageControls[] = {
    {IDOK, K::defaultPushButton, L"OK", 134, 60, 50, 14, false},
    {IDCANCEL, K::pushButton, L"Cancel", 188, 60, 50, 14, false},
    {1006, K::autoRadioButton, L"Pages: ", 7, 15, 37, 10, false},
    {1003, K::autoRadioButton, L"All", 7, 42, 24, 10, false},
    {IDC_STATIC, K::staticText,
     L"For multiple pages enter comma\nseparated list of page numbers\nor ranges.\nFor example: "
     L"1, 2, 4-8",
     121, 15, 117, 35, false},
    {1005, K::staticText, L"(# of pages)", 50, 43, 41, 8, true},
    {1004, K::edit, L"", 50, 15, 59, 12, false},
};

// Nothing opens this dialog: the options reach the user through the host's named callback.
// The template is carried so that the resources stay whole. Its control positions are our
// own layout. Fields of ImportFormatOptions: 7000/7001 preserveUnits, 7002 importScale,
// 7003 importUnit, 7004 velmoScale, 1007 importLineWeights, 7008/7009 boundaryCurves,
// 7005 loadText, 8002 dontShowDialog.
const VmDialogControl kImportOptionsControls[] = {
    {IDC_STATIC, K::groupBox, L"Scale", 7, 7, 235, 62, false},
    {7000, K::autoRadioButton, L"Fit to default screen", 14, 19, 110, 10, false},
    {7001, K::autoRadioButton, L"Preserve units", 14, 32, 110, 10, false},
    {7002, K::edit, L"", 14, 47, 40, 12, false},
    {7003, K::dropDownList, L"", 58, 47, 40, 60, false},
    {1000, K::staticText, L"in AI =", 102, 49, 30, 8, false},
    {7004, K::edit, L"", 134, 47, 40, 12, false},
    {IDC_STATIC, K::staticText, L"Velmo unit", 178, 49, 50, 8, false},
    {1007, K::autoCheckBox, L"Import line weights from PDF", 7, 75, 150, 10, false},
    {IDC_STATIC, K::groupBox, L"Import fills as ", 7, 89, 235, 38, false},
    {7008, K::autoRadioButton, L"Hatches", 14, 101, 100, 10, false},
    {7009, K::autoRadioButton, L"Boundary curves", 14, 113, 100, 10, false},
    {7005, K::autoCheckBox, L"Load Text", 7, 132, 100, 10, false},
    {8002, K::autoCheckBox, L"Always use these settings. Do not show this dialog again.", 7, 145,
     235, 10, false},
    {IDOK, K::defaultPushButton, L"OK", 82, 160, 50, 14, false},
    {IDCANCEL, K::pushButton, L"Cancel", 137, 160, 50, 14, false},
    {IDHELP, K::pushButton, L"Help", 192, 160, 50, 14, false},
};

template <class T, int N> constexpr int CountOf(const T (&)[N]) {
    return N;
}

const VmDialogTemplate kTemplates[] = {
    {kPdfSelectPageDialogId, L"PDF Select Page", 245, 81, L"MS Shell Dlg", 8, kSelectPageControls,
     CountOf(kSelectPageControls)},
    {kPdfImportOptionsDialogId, L"PDF Import Options", 249, 179, L"MS Shell Dlg", 8,
     kImportOptionsControls, CountOf(kImportOptionsControls)},
};

} // namespace

void* QuillonDialogModule() {
    void* instance = QuillonModuleInstance();
    static const bool registered = [instance] {
        VmRegisterDialogTemplates(instance, kTemplates, CountOf(kTemplates));
        return true;
    }();
    (void)registered;
    return instance;
}

const VmDialogTemplate* QuillonDialogTemplates(int& count) {
    count = CountOf(kTemplates);
    return kTemplates;
}
