#include "cli/ScriptedOptions.h"
#include "cli/UsageError.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>

namespace {

template <class T> T ValueOf(const std::string& argument) {
    const ScriptedOption option = ParseScriptedOption(argument);
    EXPECT_TRUE(std::holds_alternative<T>(option.value)) << argument;
    return std::holds_alternative<T>(option.value) ? std::get<T>(option.value) : T{};
}

TEST(ScriptedOptions, KnownKeysHaveTheirOwnType) {
    // The importer reads these with one getter each: "1" must be a double for a scale and
    // an int must not become a double.
    EXPECT_EQ(ValueOf<double>("VelmoScale=1"), 1.0);
    EXPECT_EQ(ValueOf<double>("PDFScale=2"), 2.0);
    EXPECT_EQ(ValueOf<double>("EpsScale=-3e2"), -300.0);
    EXPECT_EQ(ValueOf<int>("PdfUnits=2"), 2);
    EXPECT_EQ(ValueOf<int>("AiUnits=+3"), 3);
    EXPECT_TRUE(ValueOf<bool>("PreserveModelScale=true"));
    EXPECT_TRUE(ValueOf<bool>("LoadText=1"));
    EXPECT_FALSE(ValueOf<bool>("ImportFillsAsHatches=No"));
    // Keys are matched exactly, as the dictionary does.
    ScriptedType type = ScriptedType::String;
    EXPECT_TRUE(KnownOptionType(L"AiScale", type) && type == ScriptedType::Double);
    EXPECT_FALSE(KnownOptionType(L"aiscale", type));
}

TEST(ScriptedOptions, OtherKeysAreTypedByTheirFormUnlessForced) {
    EXPECT_TRUE(ValueOf<bool>("Flag=true"));
    EXPECT_FALSE(ValueOf<bool>("Flag=FALSE"));
    EXPECT_EQ(ValueOf<int>("Count=-42"), -42);
    EXPECT_EQ(ValueOf<int>("One=1"), 1); // only true/false are bools unforced
    EXPECT_EQ(ValueOf<double>("Ratio=0.1"), 0.1);
    EXPECT_EQ(ValueOf<double>("Big=3000000000"), 3e9); // too big for an int
    EXPECT_EQ(ValueOf<std::wstring>("Answer=yes"), L"yes");
    EXPECT_EQ(ValueOf<std::wstring>("Empty="), L"");
    EXPECT_EQ(ValueOf<std::wstring>("Spaced= 2"), L" 2");
    EXPECT_EQ(ValueOf<std::wstring>("NotANumber=nan"), L"nan");
    EXPECT_EQ(ValueOf<std::wstring>("Path=a=b"), L"a=b"); // the first '=' splits
    EXPECT_EQ(ValueOf<std::wstring>("Text=\xc3\xa9t\xc3\xa9"), L"\u00e9t\u00e9");

    EXPECT_EQ(ValueOf<double>("Ratio:double=2"), 2.0);
    EXPECT_EQ(ValueOf<int>("Count:int=7"), 7);
    EXPECT_FALSE(ValueOf<bool>("Flag:BOOL=off"));
    EXPECT_EQ(ValueOf<std::wstring>("Label:string=true"), L"true");
    // Even over a known key's type, so a mistyped entry can be handed to the importer.
    EXPECT_EQ(ValueOf<int>("VelmoScale:int=2"), 2);
    EXPECT_EQ(ParseScriptedOption("Odd:Key:int=5").key, L"Odd:Key");
}

TEST(ScriptedOptions, BadArgumentsAreUsageErrors) {
    for (const char* bad : {"NoEquals", "=5", ":int=5", "Key:float=1", "Count:int=1.5",
                            "Count:int=", "Count:int=99999999999", "Count:int= 1",
                            "Ratio:double=abc", "Ratio:double=inf", "Ratio:double=1,5",
                            "Ratio:double=0x10", "Flag:bool=maybe", "VelmoScale=big", "AiUnits=2.5",
                            "PdfUnits=", "LoadText=2", "EpsScale=++1", "AiScale=+-1"})
        EXPECT_THROW(ParseScriptedOption(bad), UsageError) << bad;
    try {
        ParseScriptedOption("AiUnits=mm");
        ADD_FAILURE() << "no error";
    } catch (const UsageError& e) {
        EXPECT_NE(std::string(e.what()).find("\"mm\" is not a valid int"), std::string::npos)
            << e.what();
    }
}

TEST(ScriptedOptions, ApplyFillsTheDictionaryLastOneWins) {
    GK_ArchivableDictionary dictionary;
    ApplyScriptedOptions({"AiScale=2", "PreserveModelScale=true", "Note=hi", "AiScale=3"},
                         dictionary);
    EXPECT_EQ(dictionary.Count(), 3);
    double scale = 0.0;
    bool preserve = false;
    std::wstring note;
    EXPECT_TRUE(dictionary.TryGetDouble(L"AiScale", scale));
    EXPECT_EQ(scale, 3.0);
    EXPECT_TRUE(dictionary.TryGetBool(L"PreserveModelScale", preserve) && preserve);
    EXPECT_TRUE(dictionary.TryGetString(L"Note", note));
    EXPECT_EQ(note, L"hi");
    GK_ArchivableDictionary other;
    EXPECT_THROW(ApplyScriptedOptions({"AiScale=2", "AiUnits=x"}, other), UsageError);
}

} // namespace
