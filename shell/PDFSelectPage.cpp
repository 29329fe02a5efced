#include "shell/PDFSelectPage.h"

#include "shell/DialogResources.h"

#include "host/base/GK_String.h"
#include "host/base/VmResources.h"
#include "host/ui/CVelmoApp.h"

#include <climits>
#include <cwctype>

namespace {

// Leading blanks, a sign and the leading digits; 0 where there are none, clamped on
// overflow. Trailing junk is ignored, so "3x" reads as 3.
long long LeadingInteger(const std::wstring& text) {
    std::size_t i = 0;
    while (i < text.size() && std::iswspace(static_cast<wint_t>(text[i])))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == L'+' || text[i] == L'-'))
        negative = text[i++] == L'-';
    long long value = 0;
    for (; i < text.size() && text[i] >= L'0' && text[i] <= L'9'; ++i) {
        value = value * 10 + (text[i] - L'0');
        if (value > INT_MAX) {
            value = static_cast<long long>(INT_MAX) + 1;
            break;
        }
    }
    if (negative)
        return value > INT_MAX ? INT_MIN : -value;
    return value > INT_MAX ? INT_MAX : value;
}

} // namespace

PDFSelectPage::PDFSelectPage(int pageCount_)
    : CVelmoDialog(kPdfSelectPageDialogId, QuillonDialogModule()), pageCount(pageCount_) {}

PDFSelectPage::~PDFSelectPage() = default;

bool PDFSelectPage::OnCommand(int id) {
    switch (id) {
    case kPagesRadio:
    case kAllRadio:
        OnPagesOrAllClicked();
        return true;
    case IDHELP:
        OnHelp();
        return true;
    default:
        return CVelmoDialog::OnCommand(id);
    }
}

void PDFSelectPage::DoDataExchange() {
    BindControl(kPageListEdit, pageListEdit);
    BindControl(kPagesRadio, pagesRadio);
    BindControl(kAllRadio, allRadio);
    BindControl(kPageCountLabel, pageCountLabel);
}

bool PDFSelectPage::OnInitDialog() {
    GK_wString label;
    label.Format(VmLocalizeString(L"(%d pages)", 40953), pageCount);
    pageCountLabel.SetWindowText(label.str());
    allRadio.SetCheck(allPages);
    pagesRadio.SetCheck(!allPages);
    pageListEdit.EnableWindow(!allRadio.IsChecked());
    pageListEdit.SetFocus();
    return true;
}

void PDFSelectPage::OnPagesOrAllClicked() {
    pageListEdit.EnableWindow(!allRadio.IsChecked());
    pageListEdit.SetFocus();
}

void PDFSelectPage::OnOK() {
    std::wstring list;
    if (allRadio.IsChecked()) {
        GK_wString all;
        all.Format(L"1-%d", pageCount);
        list = all.str();
    } else {
        list = pageListEdit.GetWindowText();
    }
    // A bad list is not a reason to keep the dialog open: what was read before it is used.
    ParsePageList(list);
    CVelmoDialog::OnOK();
}

void PDFSelectPage::OnHelp() {
    VelmoApp().DoHelp(L"fileio/portable_document_format_pdf_import_export.htm");
}

bool PDFSelectPage::OnHelpInfo() {
    OnHelp();
    return true;
}

int PDFSelectPage::ParsePageNumber(const std::wstring& text, int defaultValue) const {
    GK_wString trimmed(text);
    trimmed.TrimLeftAndRight();
    if (trimmed.IsEmpty())
        return defaultValue;
    const long long number = LeadingInteger(trimmed.str());
    if (number >= 0 && number <= pageCount)
        return static_cast<int>(number) - 1;
    return -1;
}

bool PDFSelectPage::ParsePageList(const std::wstring& text) {
    std::size_t start = 0;
    for (;;) {
        const std::size_t comma = text.find(L',', start);
        const std::size_t end = comma == std::wstring::npos ? text.size() : comma;
        const std::wstring piece = text.substr(start, end - start);
        const std::size_t hyphen = piece.find(L'-');
        if (hyphen == std::wstring::npos) {
            const int page = ParsePageNumber(piece, -1);
            if (page < 0)
                return false;
            selectedPages.insert(page);
        } else {
            const int first = ParsePageNumber(piece.substr(0, hyphen), 0);
            const int last = ParsePageNumber(piece.substr(hyphen + 1), pageCount - 1);
            if (first < 0 || last < 0 || first > last)
                return false;
            for (int page = first; page <= last; ++page)
                selectedPages.insert(page);
        }
        start = end + 1;
        if (start > text.size())
            return true;
    }
}
