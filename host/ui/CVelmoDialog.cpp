#include "host/ui/CVelmoDialog.h"

#include "host/base/GK_String.h"
#include "host/ui/VmMessages.h"
#include "host/ui/VmUiDriver.h"

#include <nlohmann/json.hpp>

#include <cwctype>
#include <map>
#include <utility>

namespace {

std::map<void*, std::pair<const VmDialogTemplate*, int>>& Templates() {
    static std::map<void*, std::pair<const VmDialogTemplate*, int>> templates;
    return templates;
}

bool IsCheckable(VmControlKind kind) {
    return kind == VmControlKind::autoRadioButton || kind == VmControlKind::autoCheckBox;
}

bool IsClickableByName(VmControlKind kind) {
    return IsCheckable(kind) || kind == VmControlKind::pushButton ||
           kind == VmControlKind::defaultPushButton;
}

// A control's text as a user would name it: no blanks around it, no trailing colon, lower case.
std::wstring NameKey(const std::wstring& text) {
    std::size_t b = 0, e = text.size();
    while (b < e && std::iswspace(static_cast<wint_t>(text[b])))
        ++b;
    while (e > b && std::iswspace(static_cast<wint_t>(text[e - 1])))
        --e;
    if (e > b && text[e - 1] == L':')
        --e;
    while (e > b && std::iswspace(static_cast<wint_t>(text[e - 1])))
        --e;
    std::wstring key = text.substr(b, e - b);
    for (wchar_t& c : key)
        c = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
    return key;
}

std::wstring OneLine(std::wstring text) {
    for (wchar_t& c : text)
        if (c == L'\n' || c == L'\r')
            c = L' ';
    return text;
}

} // namespace

void VmRegisterDialogTemplates(void* instance, const VmDialogTemplate* templates, int count) {
    Templates()[instance] = {templates, count};
}

void VmForgetDialogTemplates(bool (*inModule)(const void* address, const void* module),
                             const void* module) {
    std::erase_if(Templates(), [&](const auto& entry) {
        return inModule(entry.first, module) || inModule(entry.second.first, module);
    });
}

const VmDialogTemplate* VmFindDialogTemplate(void* instance, unsigned int id) {
    const auto it = Templates().find(instance);
    if (it == Templates().end())
        return nullptr;
    for (int i = 0; i < it->second.second; ++i)
        if (it->second.first[i].id == id)
            return &it->second.first[i];
    return nullptr;
}

// Controls -------------------------------------------------------------------------------

CVelmoUiControl::~CVelmoUiControl() = default;

bool CVelmoUiControl::IsEnabled() const {
    const auto* s = m_dialog ? m_dialog->Find(m_id) : nullptr;
    return s && s->enabled;
}

void CVelmoUiControl::EnableWindow(bool enable) {
    if (auto* s = m_dialog ? m_dialog->Find(m_id) : nullptr)
        s->enabled = enable;
}

void CVelmoUiControl::SetFocus() {
    if (m_dialog)
        m_dialog->m_focus = m_id;
}

bool CVelmoUiControl::HasFocus() const {
    return m_dialog && m_dialog->m_focus == m_id;
}

std::wstring CVelmoUiEdit::GetWindowText() const {
    const auto* s = m_dialog ? m_dialog->Find(m_id) : nullptr;
    return s ? s->text : std::wstring();
}

void CVelmoUiEdit::SetWindowText(const std::wstring& text) {
    if (auto* s = m_dialog ? m_dialog->Find(m_id) : nullptr)
        s->text = text;
}

bool CVelmoUiEdit::Accepts(VmControlKind kind) const {
    return kind == VmControlKind::edit || kind == VmControlKind::staticText;
}

bool CVelmoUiCheckBox::IsChecked() const {
    const auto* s = m_dialog ? m_dialog->Find(m_id) : nullptr;
    return s && s->checked;
}

void CVelmoUiCheckBox::SetCheck(bool checked) {
    if (auto* s = m_dialog ? m_dialog->Find(m_id) : nullptr)
        s->checked = checked;
}

bool CVelmoUiCheckBox::Accepts(VmControlKind kind) const {
    return IsCheckable(kind);
}

// Dialog ---------------------------------------------------------------------------------

CVelmoDialog::CVelmoDialog(unsigned int templateId, void* instance)
    : m_templateId(templateId), m_instance(instance) {}

// The bound handles are members of the derived dialog and are gone by now: nothing to undo.
CVelmoDialog::~CVelmoDialog() = default;

CVelmoDialog::ControlState* CVelmoDialog::Find(int id) {
    if (id == IDC_STATIC)
        return nullptr;
    for (auto& s : m_controls)
        if (s.control.id == id)
            return &s;
    return nullptr;
}

const CVelmoDialog::ControlState* CVelmoDialog::Find(int id) const {
    return const_cast<CVelmoDialog*>(this)->Find(id);
}

void CVelmoDialog::Report(const std::wstring& text) const {
    VmMessages().Add("print", L"", text + L"\n");
}

std::wstring CVelmoDialog::Title() const {
    return m_template && m_template->title ? m_template->title : L"";
}

bool CVelmoDialog::BindControl(int id, CVelmoUiControl& control) {
    const ControlState* s = Find(id);
    if (!s || !control.Accepts(s->control.kind)) {
        Report(VmFormat(L"Dialog %u: control %d cannot be bound", m_templateId, id));
        m_bindFailed = true;
        return false;
    }
    control.m_dialog = this;
    control.m_id = id;
    return true;
}

bool CVelmoDialog::Open() {
    m_template = VmFindDialogTemplate(m_instance, m_templateId);
    if (!m_template) {
        Report(VmFormat(L"Dialog %u: no such dialog resource", m_templateId));
        return false;
    }
    m_controls.clear();
    for (int i = 0; i < m_template->controlCount; ++i) {
        const VmDialogControl& c = m_template->controls[i];
        m_controls.push_back({c, c.text ? c.text : L"", !c.disabled, false});
    }
    m_focus = IDC_STATIC;
    m_bindFailed = false;
    m_ended = false;
    m_result = IDCANCEL;
    m_open = true;
    DoDataExchange();
    if (m_bindFailed) {
        m_open = false;
        return false;
    }
    OnInitDialog();
    return true;
}

void CVelmoDialog::EndDialog(int result) {
    m_result = result;
    m_ended = true;
}

bool CVelmoDialog::OnCommand(int id) {
    if (id == IDOK) {
        OnOK();
        return true;
    }
    if (id == IDCANCEL) {
        OnCancel();
        return true;
    }
    return false;
}

bool CVelmoDialog::Click(int id) {
    if (!m_open || m_ended)
        return false;
    ControlState* s = Find(id);
    if (!s || !s->enabled)
        return false;
    switch (s->control.kind) {
    case VmControlKind::autoRadioButton: {
        // Clear the run of radio buttons this one belongs to, then check it.
        const std::size_t at = static_cast<std::size_t>(s - m_controls.data());
        std::size_t first = at, last = at;
        while (first > 0 && m_controls[first - 1].control.kind == VmControlKind::autoRadioButton)
            --first;
        while (last + 1 < m_controls.size() &&
               m_controls[last + 1].control.kind == VmControlKind::autoRadioButton)
            ++last;
        for (std::size_t i = first; i <= last; ++i)
            m_controls[i].checked = false;
        s->checked = true;
        break;
    }
    case VmControlKind::autoCheckBox:
        s->checked = !s->checked;
        break;
    case VmControlKind::edit:
    case VmControlKind::dropDownList:
        m_focus = id;
        return true;
    case VmControlKind::staticText:
    case VmControlKind::groupBox:
        return false;
    case VmControlKind::defaultPushButton:
    case VmControlKind::pushButton:
        break;
    }
    OnCommand(id);
    return true;
}

bool CVelmoDialog::TypeText(int id, const std::wstring& text) {
    if (!m_open || m_ended)
        return false;
    ControlState* s = Find(id);
    if (!s || !s->enabled || s->control.kind != VmControlKind::edit)
        return false;
    s->text = text;
    m_focus = id;
    return true;
}

std::wstring CVelmoDialog::DescribeControls() const {
    std::wstring out = Title() + L":\n";
    for (const ControlState& s : m_controls) {
        std::wstring line = L"  ";
        switch (s.control.kind) {
        case VmControlKind::defaultPushButton:
        case VmControlKind::pushButton:
            line += L"<" + s.text + L">";
            break;
        case VmControlKind::autoRadioButton:
            line += (s.checked ? L"(o) " : L"( ) ") + s.text;
            break;
        case VmControlKind::autoCheckBox:
            line += (s.checked ? L"[x] " : L"[ ] ") + s.text;
            break;
        case VmControlKind::edit:
        case VmControlKind::dropDownList:
            line += L"edit \"" + s.text + L"\"";
            break;
        case VmControlKind::staticText:
            line += L"\"" + OneLine(s.text) + L"\"";
            break;
        case VmControlKind::groupBox:
            line += L"group \"" + s.text + L"\"";
            break;
        }
        if (s.control.id != IDC_STATIC)
            line += VmFormat(L" [%d]", s.control.id);
        if (!s.enabled)
            line += L" disabled";
        if (m_focus != IDC_STATIC && m_focus == s.control.id)
            line += L" focus";
        out += line + L"\n";
    }
    return out;
}

bool CVelmoDialog::ApplyObject(const std::string& text) {
    const nlohmann::json a = nlohmann::json::parse(text, nullptr, false);
    if (a.is_discarded() || !a.is_object())
        return false;
    // Checked whole before anything is done, so a bad answer changes nothing.
    const auto click = a.find("click");
    const auto edit = a.find("edit");
    const auto button = a.find("button");
    if (click != a.end()) {
        if (!click->is_array())
            return false;
        for (const auto& id : *click)
            if (!id.is_number_integer())
                return false;
    }
    if (edit != a.end()) {
        if (!edit->is_object())
            return false;
        for (const auto& [key, value] : edit->items()) {
            if (!value.is_string() || key.empty() ||
                key.find_first_not_of("-0123456789") != std::string::npos)
                return false;
        }
    }
    if (button != a.end() && (!button->is_string() || (*button != "ok" && *button != "cancel")))
        return false;

    if (click != a.end())
        for (const auto& id : *click) {
            if (m_ended)
                return true;
            if (!Click(id.get<int>()))
                Report(VmFormat(L"Dialog %ls: control %d cannot be clicked", Title().c_str(),
                                id.get<int>()));
        }
    if (edit != a.end())
        for (const auto& [key, value] : edit->items()) {
            if (m_ended)
                return true;
            const int id = std::stoi(key);
            if (!TypeText(id, VmWideFromUtf8(value.get<std::string>())))
                Report(VmFormat(L"Dialog %ls: control %d cannot be edited", Title().c_str(), id));
        }
    if (m_ended)
        return true;
    if (button != a.end() && *button == "cancel")
        OnCancel();
    else
        OnOK();
    return true;
}

bool CVelmoDialog::Apply(const std::string& answer, bool fixed) {
    if (VmIsCancelAnswer(answer)) {
        OnCancel();
        return true;
    }
    if (VmIsEnterAnswer(answer) || answer == "<ok>") {
        OnOK();
        return true;
    }
    if (answer == "<help>") {
        OnHelpInfo();
        return true;
    }
    if (!fixed && !answer.empty() && answer.front() == '{')
        return ApplyObject(answer);

    const std::wstring text = VmWideFromUtf8(answer);
    const std::wstring key = NameKey(text);
    for (const ControlState& s : m_controls)
        if (IsClickableByName(s.control.kind) && !key.empty() && NameKey(s.text) == key) {
            if (!Click(s.control.id))
                Report(VmFormat(L"Dialog %ls: control %d cannot be clicked", Title().c_str(),
                                s.control.id));
            if (!m_ended)
                OnOK();
            return true;
        }

    // Typed text: the first edit, after its label is selected.
    const ControlState* target = nullptr;
    for (const ControlState& s : m_controls)
        if (s.control.kind == VmControlKind::edit) {
            target = &s;
            break;
        }
    if (!target)
        return false;
    const VmDialogControl& e = target->control;
    const ControlState* label = nullptr;
    for (const ControlState& s : m_controls) {
        const VmDialogControl& c = s.control;
        const bool sameRow = c.y < e.y + e.height && e.y < c.y + c.height;
        if (IsCheckable(c.kind) && sameRow && c.x + c.width <= e.x &&
            (!label || c.x > label->control.x))
            label = &s;
    }
    const int editId = e.id;
    if (label && !(label->control.kind == VmControlKind::autoCheckBox && label->checked))
        Click(label->control.id);
    if (m_ended)
        return true;
    if (!TypeText(editId, text))
        Report(VmFormat(L"Dialog %ls: control %d cannot be edited", Title().c_str(), editId));
    if (!m_ended)
        OnOK();
    return true;
}

int CVelmoDialog::DoModal() {
    if (!Open())
        return -1;
    const std::wstring title = Title();
    VmMessages().Add("prompt", title, title + L" dialog\n");

    if (const auto& fixed = VmUi().StringAnswer()) {
        Report(VmWideFromUtf8(*fixed));
        Apply(*fixed, true);
    } else {
        while (!m_ended) {
            std::optional<std::string> answer;
            if (auto scripted = VmUi().NextScripted()) {
                if (scripted->is_string())
                    answer = scripted->get<std::string>();
                else if (scripted->is_null())
                    answer = "<ok>";
                else if (scripted->is_number() || scripted->is_object())
                    answer = scripted->dump();
                else {
                    Report(L"Dialog answer not understood: " + VmWideFromUtf8(scripted->dump()));
                    continue;
                }
            } else if (VmUi().HasTerminal()) {
                VmUi().WriteTerminal(VmUtf8FromWide(DescribeControls()) +
                                     "Enter or <ok> for OK, <cancel>, <help>, a button's text, "
                                     "text for the edit, or {\"click\":[..],\"edit\":{..}}\n");
                answer = VmUi().ReadTerminalLine("Dialog: ");
            }
            if (!answer)
                break; // nothing more to ask: OK as the dialog stands
            Report(VmWideFromUtf8(*answer));
            if (!Apply(*answer, false))
                Report(L"Dialog answer not understood: " + VmWideFromUtf8(*answer));
        }
    }
    // With no answer left, OK; a dialog that refuses it can only be cancelled.
    if (!m_ended)
        OnOK();
    if (!m_ended)
        OnCancel();
    if (!m_ended)
        EndDialog(IDCANCEL);
    return m_result;
}
