#include "shell/DialogResources.h"
#include "shell/PDFSelectPage.h"
#include "shell/PagePrompt.h"

#include "support/TestSupport.h"

#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

namespace {

class PageSelection : public ::testing::Test {
protected:
    void SetUp() override { tarquil::test::ResetHost(); }
    void TearDown() override { tarquil::test::ResetHost(); }

    static std::set<int> Range(int first, int last) {
        std::set<int> s;
        for (int i = first; i <= last; ++i)
            s.insert(i);
        return s;
    }
    static bool Logged(const char* kind, const std::wstring& part) {
        for (const VmMessage& m : VmMessages().Messages())
            if (m.kind == kind && m.text.find(part) != std::wstring::npos)
                return true;
        return false;
    }
    // Parses `text` on a fresh dialog of `pages` pages.
    static std::pair<bool, std::set<int>> Parse(const std::wstring& text, int pages = 10) {
        PDFSelectPage d(pages);
        const bool ok = d.ParsePageList(text);
        return {ok, {d.selectedPages.begin(), d.selectedPages.end()}};
    }
};

TEST_F(PageSelection, GoodListsSelectTheirPages) {
    EXPECT_EQ(Parse(L"1, 2, 4-8"), std::make_pair(true, std::set<int>{0, 1, 3, 4, 5, 6, 7}));
    EXPECT_EQ(Parse(L" 3 "), std::make_pair(true, std::set<int>{2}));
    EXPECT_EQ(Parse(L"1-", 3), std::make_pair(true, Range(0, 2)));
    EXPECT_EQ(Parse(L"-5"), std::make_pair(true, Range(0, 4)));
    EXPECT_EQ(Parse(L"4-"), std::make_pair(true, Range(3, 9)));
    EXPECT_EQ(Parse(L"-"), std::make_pair(true, Range(0, 9)));
    EXPECT_EQ(Parse(L"10"), std::make_pair(true, std::set<int>{9}));
    // Order and repetition don't matter; trailing junk after the digits is ignored.
    EXPECT_EQ(Parse(L"5,1,5,2-3,3"), std::make_pair(true, std::set<int>{0, 1, 2, 4}));
    EXPECT_EQ(Parse(L"3x"), std::make_pair(true, std::set<int>{2}));
}

TEST_F(PageSelection, BadListsFailKeepingPagesReadBefore) {
    const std::set<int> none;
    EXPECT_EQ(Parse(L"8-4"), std::make_pair(false, none));
    EXPECT_EQ(Parse(L"1,8-4"), std::make_pair(false, std::set<int>{0}));
    EXPECT_EQ(Parse(L"0"), std::make_pair(false, none));
    EXPECT_EQ(Parse(L"0-3"), std::make_pair(false, none));
    EXPECT_EQ(Parse(L"99"), std::make_pair(false, none));
    EXPECT_EQ(Parse(L"8-99"), std::make_pair(false, none));
    EXPECT_EQ(Parse(L"2,,3"), std::make_pair(false, std::set<int>{1}));
    EXPECT_EQ(Parse(L""), std::make_pair(false, none));
    EXPECT_EQ(Parse(L"1,2,"), std::make_pair(false, std::set<int>{0, 1}));
    EXPECT_EQ(Parse(L"abc"), std::make_pair(false, none));
    EXPECT_EQ(Parse(L"2,abc,3"), std::make_pair(false, std::set<int>{1}));
    // The set is added to, never cleared.
    PDFSelectPage d(10);
    EXPECT_TRUE(d.ParsePageList(L"1"));
    EXPECT_FALSE(d.ParsePageList(L"3,0"));
    EXPECT_EQ(d.selectedPages, (std::set<int>{0, 2}));
}

TEST_F(PageSelection, PageNumberReadsLeadingDigits) {
    PDFSelectPage d(10);
    EXPECT_EQ(d.ParsePageNumber(L"", 7), 7);
    EXPECT_EQ(d.ParsePageNumber(L" \t ", -1), -1);
    EXPECT_EQ(d.ParsePageNumber(L"1", -1), 0);
    EXPECT_EQ(d.ParsePageNumber(L" 7\t", -1), 6);
    EXPECT_EQ(d.ParsePageNumber(L"10", -1), 9);
    EXPECT_EQ(d.ParsePageNumber(L"11", 5), -1);
    EXPECT_EQ(d.ParsePageNumber(L"0", 5), -1);
    EXPECT_EQ(d.ParsePageNumber(L"abc", 5), -1);
    EXPECT_EQ(d.ParsePageNumber(L"3x", -1), 2);
    EXPECT_EQ(d.ParsePageNumber(L"+4", -1), 3);
    EXPECT_EQ(d.ParsePageNumber(L"-2", -1), -1);
    EXPECT_EQ(d.ParsePageNumber(L"99999999999999999999", -1), -1);
    EXPECT_EQ(d.ParsePageNumber(L"-99999999999999999999", -1), -1);
}

TEST_F(PageSelection, DialogOpensWithAllAndFollowsClicks) {
    PDFSelectPage d(10);
    ASSERT_TRUE(d.Open());
    EXPECT_EQ(d.pageCountLabel.GetWindowText(), L"(10 pages)");
    EXPECT_TRUE(d.allRadio.IsChecked());
    EXPECT_FALSE(d.pagesRadio.IsChecked());
    EXPECT_FALSE(d.pageListEdit.IsEnabled());
    EXPECT_TRUE(d.pageListEdit.HasFocus());
    EXPECT_FALSE(d.TypeText(PDFSelectPage::kPageListEdit, L"2")); // disabled
    EXPECT_FALSE(d.Click(PDFSelectPage::kPageCountLabel));        // a static

    EXPECT_TRUE(d.Click(PDFSelectPage::kPagesRadio));
    EXPECT_TRUE(d.pagesRadio.IsChecked());
    EXPECT_FALSE(d.allRadio.IsChecked());
    EXPECT_TRUE(d.pageListEdit.IsEnabled());
    EXPECT_TRUE(d.pageListEdit.HasFocus());
    EXPECT_TRUE(d.TypeText(PDFSelectPage::kPageListEdit, L"2"));

    EXPECT_TRUE(d.Click(PDFSelectPage::kAllRadio));
    EXPECT_FALSE(d.pagesRadio.IsChecked());
    EXPECT_FALSE(d.pageListEdit.IsEnabled());
    EXPECT_TRUE(d.pageListEdit.HasFocus());

    // Help keeps the dialog open; the command and the help key open the same page.
    EXPECT_FALSE(d.Click(IDHELP)); // the template has no such button
    EXPECT_FALSE(Logged("print", L"Help: "));
    EXPECT_TRUE(d.SendCommand(IDHELP));
    EXPECT_FALSE(d.SendCommand(4242));
    EXPECT_FALSE(d.HasEnded());
    EXPECT_TRUE(Logged("print", L"Help: fileio/portable_document_format_pdf_import_export.htm"));
    VmMessages().Clear();
    d.SendHelp();
    EXPECT_TRUE(Logged("print", L"Help: fileio/portable_document_format_pdf_import_export.htm"));

    // OK with "All" checked ignores the "2" still in the edit.
    EXPECT_TRUE(d.Click(IDOK));
    EXPECT_TRUE(d.HasEnded());
    EXPECT_EQ(d.Result(), IDOK);
    EXPECT_EQ(d.selectedPages, Range(0, 9));
    EXPECT_FALSE(d.Click(PDFSelectPage::kPagesRadio)); // closed
}

TEST_F(PageSelection, DialogOkAndCancelWithAList) {
    PDFSelectPage bad(10);
    ASSERT_TRUE(bad.Open());
    bad.Click(PDFSelectPage::kPagesRadio);
    bad.TypeText(PDFSelectPage::kPageListEdit, L"1,3,0,5");
    bad.Click(IDOK);
    EXPECT_EQ(bad.Result(), IDOK); // closes all the same, with the pages before the 0
    EXPECT_EQ(bad.selectedPages, (std::set<int>{0, 2}));
    EXPECT_FALSE(Logged("box", L"")); // no message for a bad list

    PDFSelectPage cancelled(10);
    ASSERT_TRUE(cancelled.Open());
    cancelled.Click(PDFSelectPage::kPagesRadio);
    cancelled.TypeText(PDFSelectPage::kPageListEdit, L"4");
    cancelled.Click(IDCANCEL);
    EXPECT_EQ(cancelled.Result(), IDCANCEL);
    EXPECT_TRUE(cancelled.selectedPages.empty());
}

TEST_F(PageSelection, DialogTakesScriptedAnswers) {
    struct Case {
        nlohmann::json answer;
        std::set<int> pages;
    };
    const Case cases[] = {
        {"<ok>", Range(0, 9)},
        {"", Range(0, 9)},
        {nullptr, Range(0, 9)},
        {"<cancel>", {}},
        {"<escape>", {}},
        {"All", Range(0, 9)},
        {"pages:", {}}, // "Pages: " with an empty edit: nothing read
        {"2-3", {1, 2}},
        {4, {3}},
        {"2,,9", {1}},
        {{{"click", {1006}}, {"edit", {{"1004", "1,5"}}}}, {0, 4}},
        {{{"click", {1006}}, {"edit", {{"1004", "1,5"}}}, {"button", "cancel"}}, {}},
        {{{"click", {1006, 2}}, {"edit", {{"1004", "1"}}}}, {}}, // Cancel clicked first
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.answer.dump());
        tarquil::test::ResetHost();
        VmUi().AddScriptAnswer(c.answer);
        EXPECT_EQ(PromptForPages(10, false), c.pages);
        EXPECT_EQ(VmUi().ScriptLeft(), 0u);
        EXPECT_TRUE(Logged("prompt", L"PDF Select Page"));
    }

    // Nothing scripted and no terminal: OK as the dialog opened.
    tarquil::test::ResetHost();
    EXPECT_EQ(PromptForPages(4, false), Range(0, 3));

    // Editing the disabled edit is refused, so OK reads "All".
    tarquil::test::ResetHost();
    VmUi().AddScriptAnswer({{"edit", {{"1004", "3"}}}});
    EXPECT_EQ(PromptForPages(10, false), Range(0, 9));
    EXPECT_TRUE(Logged("print", L"control 1004 cannot be edited"));

    // Help and answers that fit nothing keep the dialog open for the next answer.
    tarquil::test::ResetHost();
    VmUi().SetScript({"<help>", true, {{"click", "x"}}, "3"});
    EXPECT_EQ(PromptForPages(10, false), (std::set<int>{2}));
    EXPECT_TRUE(Logged("print", L"Help: fileio/"));
    EXPECT_TRUE(Logged("print", L"Dialog answer not understood: true"));
    EXPECT_TRUE(Logged("print", L"Dialog answer not understood: {\"click\":\"x\"}"));
}

TEST_F(PageSelection, DialogTakesTheFixedAnswerThenTheTerminal) {
    VmUi().SetStringAnswer("4,6");
    VmUi().AddScriptAnswer("<cancel>"); // the fixed answer comes first
    EXPECT_EQ(PromptForPages(10, false), (std::set<int>{3, 5}));
    EXPECT_EQ(VmUi().ScriptLeft(), 1u);
    VmUi().SetStringAnswer("<cancel>");
    EXPECT_TRUE(PromptForPages(10, false).empty());
    VmUi().SetStringAnswer("");
    EXPECT_EQ(PromptForPages(10, false), Range(0, 9));
    VmUi().SetStringAnswer("<help>"); // the fixed answer always ends the dialog
    EXPECT_EQ(PromptForPages(3, false), Range(0, 2));

    tarquil::test::ResetHost();
    std::istringstream in("{bad\n{\"click\":[1006],\"edit\":{\"1004\":\"5-\"}}\n");
    std::ostringstream out;
    VmUi().SetTerminal(&in, &out);
    EXPECT_EQ(PromptForPages(7, false), Range(4, 6));
    EXPECT_NE(out.str().find("(o) All [1003]"), std::string::npos);
    EXPECT_NE(out.str().find("edit \"\" [1004] disabled focus"), std::string::npos);
    EXPECT_NE(out.str().find("\"(7 pages)\" [1005] disabled"), std::string::npos);

    // End of input: OK as the dialog stands.
    tarquil::test::ResetHost();
    std::istringstream empty("");
    VmUi().SetTerminal(&empty, &out);
    EXPECT_EQ(PromptForPages(2, false), Range(0, 1));
}

TEST_F(PageSelection, CommandLineAsksWithThePageCount) {
    VmUi().AddScriptAnswer("");
    EXPECT_EQ(PromptForPages(7, true), Range(0, 6));
    ASSERT_FALSE(VmMessages().Messages().empty());
    EXPECT_TRUE(Logged("prompt", L"Page numbers to import. Press Enter for all. <1-7> <Enter>: "));
    EXPECT_FALSE(Logged("prompt", L"PDF Select Page")); // no dialog in batch mode

    const std::pair<nlohmann::json, std::set<int>> cases[] = {
        {"<enter>", Range(0, 6)}, {"<cancel>", {}}, {"<escape>", {}}, {"2,4-5", {1, 3, 4}},
        {"2,x,3", {1}},           {"0", {}},        {"6-", {5, 6}},   {nullptr, Range(0, 6)},
    };
    for (const auto& [answer, pages] : cases) {
        SCOPED_TRACE(answer.dump());
        tarquil::test::ResetHost();
        VmUi().AddScriptAnswer(answer);
        EXPECT_EQ(PromptForPages(7, true), pages);
    }

    // As `tarquil import --pages` sets it.
    tarquil::test::ResetHost();
    VmUi().SetStringAnswer("3");
    EXPECT_EQ(PromptForPages(7, true), (std::set<int>{2}));
    VmUi().SetStringAnswer("");
    EXPECT_EQ(PromptForPages(7, true), Range(0, 6));
    VmUi().SetStringAnswer("<cancel>");
    EXPECT_TRUE(PromptForPages(7, true).empty());
}

// A dialog over the options template, to see the host's radio groups and binding checks.
class OptionsView : public CVelmoDialog {
public:
    explicit OptionsView(int badBind = 0)
        : CVelmoDialog(kPdfImportOptionsDialogId, QuillonDialogModule()), m_badBind(badBind) {}
    CVelmoUiCheckBox fit, preserve, hatches, curves, loadText;

protected:
    void DoDataExchange() override {
        BindControl(7000, fit);
        BindControl(7001, preserve);
        BindControl(7008, hatches);
        BindControl(7009, curves);
        BindControl(m_badBind ? m_badBind : 7005, loadText);
    }

private:
    int m_badBind;
};

TEST_F(PageSelection, HostDialogGroupsRadiosAndChecksBindings) {
    OptionsView v;
    ASSERT_TRUE(v.Open());
    EXPECT_EQ(v.Title(), L"PDF Import Options");
    v.Click(7001);
    v.Click(7008);
    v.Click(7005);
    EXPECT_TRUE(v.preserve.IsChecked());
    EXPECT_TRUE(v.hatches.IsChecked());
    EXPECT_TRUE(v.loadText.IsChecked());
    v.Click(7000); // only its own group changes
    v.Click(7005); // a check box toggles
    EXPECT_TRUE(v.fit.IsChecked());
    EXPECT_FALSE(v.preserve.IsChecked());
    EXPECT_TRUE(v.hatches.IsChecked());
    EXPECT_FALSE(v.curves.IsChecked());
    EXPECT_FALSE(v.loadText.IsChecked());
    // A click whose text names a control: "Load Text", then OK.
    VmUi().AddScriptAnswer("load text");
    EXPECT_EQ(v.DoModal(), IDOK);
    EXPECT_TRUE(v.loadText.IsChecked());

    OptionsView edit(7002); // a check box handle on an edit
    EXPECT_EQ(edit.DoModal(), -1);
    OptionsView missing(4242);
    EXPECT_EQ(missing.DoModal(), -1);
    CVelmoDialog unknown(1234, QuillonDialogModule());
    EXPECT_EQ(unknown.DoModal(), -1);
    EXPECT_TRUE(Logged("print", L"Dialog 1234: no such dialog resource"));

    // Every control of both templates lies inside its dialog, and ids are not repeated.
    int count = 0;
    const VmDialogTemplate* templates = QuillonDialogTemplates(count);
    ASSERT_EQ(count, 2);
    for (int t = 0; t < count; ++t) {
        const VmDialogTemplate& dt = templates[t];
        EXPECT_EQ(VmFindDialogTemplate(QuillonDialogModule(), dt.id), &dt);
        std::set<int> ids;
        for (int i = 0; i < dt.controlCount; ++i) {
            const VmDialogControl& c = dt.controls[i];
            SCOPED_TRACE(testing::Message() << dt.id << "/" << c.id);
            EXPECT_TRUE(c.id == IDC_STATIC || ids.insert(c.id).second);
            EXPECT_GE(c.x, 0);
            EXPECT_GE(c.y, 0);
            EXPECT_LE(c.x + c.width, dt.width);
            EXPECT_LE(c.y + c.height, dt.height);
        }
    }
}

} // namespace
