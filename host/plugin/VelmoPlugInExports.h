#pragma once
// The functions that a plug-in library exports by name, with C linkage and no arguments, and
// that the host reads before it trusts the library; and the host's own values to match.
#include <string>

using VelmoPlugInIntExport = int (*)();
using VelmoPlugInBoolExport = bool (*)();
// The interface versions have their top bit set, so they are unsigned: the same 32 bits.
using VelmoPlugInVersionExport = unsigned int (*)();
using VelmoPlugInTextExport = const wchar_t* (*)();

// What the host read from the exports of one library.
struct VelmoPlugInExports {
    int mfcVersion = 0; // the framework's version the library was built with
    int mscVersion = 0; // the build tool's version
    bool usesMfc = false;
    unsigned int sdkVersion = 0; // the plug-in interface it was built for
    unsigned int sdkServiceRelease = 0;
    std::wstring developerOrganization;
    std::wstring developerAddress;
    std::wstring developerCountry;
    std::wstring developerPhone;
    std::wstring developerFax;
    std::wstring developerEmail;
    std::wstring developerWebsite;
    std::wstring updateUrl;
};

// The plug-in interface of this host. A library built for another one is refused.
inline constexpr unsigned int kVelmoSdkVersion = 0x8C006509u;
// The service release of this host, only reported: plug-ins of any service release of the same
// interface load, since a service release does not change the interface.
inline constexpr unsigned int kVelmoSdkServiceRelease = 0x908C9905u;
