#pragma once
// The dialog that asks which pages of a PDF to import, and the page-list parser that the
// command-line form uses as well.
#include "host/ui/CVelmoDialog.h"

#include <cstdint>
#include <set>
#include <string>

class PDFSelectPage : public CVelmoDialog {
public:
    static constexpr int kPageListEdit = 1004;
    static constexpr int kPagesRadio = 1006;
    static constexpr int kAllRadio = 1003;
    static constexpr int kPageCountLabel = 1005;

    explicit PDFSelectPage(int pageCount);
    ~PDFSelectPage() override;

    CVelmoUiEdit pageListEdit;
    CVelmoUiCheckBox pagesRadio;
    CVelmoUiCheckBox allRadio;
    bool allPages = true;
    CVelmoUiEdit pageCountLabel;
    std::int32_t pageCount = 0;
    std::set<std::int32_t> selectedPages; // from 0

    // Adds the pages of a list such as "1, 2, 4-8" to selectedPages; true if the whole text
    // was good. Pages read before a bad piece stay.
    bool ParsePageList(const std::wstring& text);
    // A page number from 1 in the text, as a page from 0; `defaultValue` for blank text, and
    // -1 for anything out of range.
    int ParsePageNumber(const std::wstring& text, int defaultValue) const;

protected:
    bool OnCommand(int id) override;
    void DoDataExchange() override;
    bool OnInitDialog() override;
    void OnOK() override;
    bool OnHelpInfo() override;

private:
    void OnPagesOrAllClicked();
    void OnHelp();
};
