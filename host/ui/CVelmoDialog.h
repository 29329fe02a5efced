#pragma once
// Modal dialogs of a headless host: templates that a module registers as its resources, the
// dialog base a plug-in derives from, and the edit and check-box controls it binds to ids.
//
// How a headless DoModal() gets its answer. It records a "prompt" message naming the dialog
// (the title), then takes the first of these that exists:
//   1. VmUi().StringAnswer(), the fixed answer to every string question;
//   2. the next scripted answer (VmUi().NextScripted());
//   3. a line from the terminal, after the controls' state is printed there;
//   4. otherwise OK, with the dialog as it opened.
// A string answer, from any of the three sources, is one of:
//   "<ok>" or "" or "<enter>"   press OK with the dialog as it opened;
//   "<cancel>" or "<escape>"    press Cancel;
//   "<help>"                    send the help message; the dialog stays open and asks again
//                               (not from the fixed answer, which always ends the dialog);
//   the text of a button, radio button or check box (case and a trailing ':' ignored, e.g.
//   "All")                      click it, then press OK unless the click ended the dialog;
//   any other text              type it into the first edit of the template, after clicking
//                               the radio button or check box that labels that edit (the one
//                               to its left on the same row), then press OK.
// A scripted answer (or a terminal line starting with '{') may also be an object, for full
// control: {"click": [ids...], "edit": {"1004": "1,2"}, "button": "ok" | "cancel"}. Clicks run
// in order, then edits, then the button ("ok" when left out) unless a click ended the dialog.
// A click on or edit of a disabled control, or of an id the dialog lacks, is reported and
// skipped, as a user could not do it either. A scripted null is "<ok>", a number is typed as
// text; anything else is reported and the dialog asks again.
#include <string>
#include <vector>

constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int IDHELP = 9;
constexpr int IDC_STATIC = -1;

enum class VmControlKind {
    defaultPushButton,
    pushButton,
    autoRadioButton,
    autoCheckBox,
    edit,
    staticText,
    groupBox,
    dropDownList,
};

// One control of a template. Position and size are in dialog units. Consecutive auto radio
// buttons form one group: checking one clears the others.
struct VmDialogControl {
    int id = IDC_STATIC;
    VmControlKind kind = VmControlKind::staticText;
    const wchar_t* text = L"";
    int x = 0, y = 0, width = 0, height = 0;
    bool disabled = false;
};

struct VmDialogTemplate {
    unsigned int id = 0;
    const wchar_t* title = L"";
    int width = 0, height = 0;
    const wchar_t* fontName = L"";
    int fontSize = 0;
    const VmDialogControl* controls = nullptr;
    int controlCount = 0;
};

// Registers (or replaces) the dialog templates of a module. The table must outlive the
// registration.
void VmRegisterDialogTemplates(void* instance, const VmDialogTemplate* templates, int count);
// Drops the templates that `inModule` claims (it is given the instance and the table), when
// the module that registered them goes away.
void VmForgetDialogTemplates(bool (*inModule)(const void* address, const void* module),
                             const void* module);
// The template `id` of the module, or null.
const VmDialogTemplate* VmFindDialogTemplate(void* instance, unsigned int id);

class CVelmoDialog;

// A handle on one control of an open dialog. Until DoDataExchange binds it, it reads as an
// empty, disabled control and ignores changes.
class CVelmoUiControl {
public:
    CVelmoUiControl() = default;
    CVelmoUiControl(const CVelmoUiControl&) = delete;
    CVelmoUiControl& operator=(const CVelmoUiControl&) = delete;
    virtual ~CVelmoUiControl();

    int Id() const { return m_id; }
    bool IsBound() const { return m_dialog != nullptr; }
    bool IsEnabled() const;
    void EnableWindow(bool enable = true);
    void SetFocus();
    bool HasFocus() const;

protected:
    friend class CVelmoDialog;
    // Which template kinds this handle may be bound to.
    virtual bool Accepts(VmControlKind kind) const = 0;
    CVelmoDialog* m_dialog = nullptr;
    int m_id = IDC_STATIC;
};

// Text of an edit or static control.
class CVelmoUiEdit : public CVelmoUiControl {
public:
    std::wstring GetWindowText() const;
    void SetWindowText(const std::wstring& text);

protected:
    bool Accepts(VmControlKind kind) const override;
};

// An auto radio button or check box.
class CVelmoUiCheckBox : public CVelmoUiControl {
public:
    bool IsChecked() const;
    void SetCheck(bool checked);

protected:
    bool Accepts(VmControlKind kind) const override;
};

class CVelmoDialog {
public:
    // `templateId` names a template registered by the module `instance`.
    CVelmoDialog(unsigned int templateId, void* instance);
    virtual ~CVelmoDialog();
    CVelmoDialog(const CVelmoDialog&) = delete;
    CVelmoDialog& operator=(const CVelmoDialog&) = delete;

    // Runs the dialog until it ends; IDOK, IDCANCEL, or -1 when it could not be opened (no
    // such template, or a control that could not be bound).
    int DoModal();

    // The steps of DoModal, for a driver that answers by itself. Open builds the controls,
    // binds them and runs OnInitDialog; false if it cannot be opened.
    bool Open();
    // A user's click: checks a radio button or toggles a check box first, then tells the
    // dialog. False when the dialog is not open or the control is missing or disabled.
    bool Click(int id);
    // A user's typing into an edit; false when it is missing, not an edit, or disabled.
    bool TypeText(int id, const std::wstring& text);
    // A command that comes without a control of the template, such as Help (9); what
    // OnCommand says.
    bool SendCommand(int id) { return m_open && !m_ended && OnCommand(id); }
    // The help key.
    void SendHelp() { OnHelpInfo(); }
    bool IsOpen() const { return m_open; }
    bool HasEnded() const { return m_ended; }
    int Result() const { return m_result; }
    unsigned int TemplateId() const { return m_templateId; }
    // The template's title, or an empty text when there is none.
    std::wstring Title() const;
    // Each control's state, one line each, as the terminal shows it.
    std::wstring DescribeControls() const;

    void EndDialog(int result);

protected:
    // Binds the plug-in's control handles; calls BindControl for each.
    virtual void DoDataExchange() {}
    // After binding, before the user acts. The return value says whether the host should
    // give the focus to the first control; a headless host does not use it.
    virtual bool OnInitDialog() { return true; }
    // A click on control `id`; true when handled. The base presses OK and Cancel.
    virtual bool OnCommand(int id);
    virtual void OnOK() { EndDialog(IDOK); }
    virtual void OnCancel() { EndDialog(IDCANCEL); }
    // The help message (the help key); true when handled.
    virtual bool OnHelpInfo() { return false; }

    // False (and the dialog will not open) when the template has no such control or its kind
    // does not suit the handle.
    bool BindControl(int id, CVelmoUiControl& control);

private:
    friend class CVelmoUiControl;
    friend class CVelmoUiEdit;
    friend class CVelmoUiCheckBox;

    struct ControlState {
        VmDialogControl control;
        std::wstring text;
        bool enabled = true;
        bool checked = false;
    };
    ControlState* Find(int id);
    const ControlState* Find(int id) const;
    // Applies one answer; false when it was not understood.
    bool Apply(const std::string& answer, bool fixed);
    bool ApplyObject(const std::string& json);
    void Report(const std::wstring& text) const;

    unsigned int m_templateId;
    void* m_instance;
    const VmDialogTemplate* m_template = nullptr;
    std::vector<ControlState> m_controls;
    std::vector<CVelmoUiControl*> m_bound;
    int m_focus = IDC_STATIC;
    bool m_bindFailed = false;
    bool m_open = false;
    bool m_ended = false;
    int m_result = IDCANCEL;
};
