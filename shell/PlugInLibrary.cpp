// What makes the importer a library for the host: its two global objects and its exports.
// This file goes into the shared library only, never into the static `shell`, so a program
// that links the importer's code for tests gets no second plug-in object.
#include "shell/CQuillonApp.h"
#include "shell/CQuillonPlugIn.h"

namespace {

// Made at load by static initialisation, in this order (one file fixes the order), and
// destroyed at unload in the reverse one.
CQuillonApp theApp;
CQuillonPlugIn thePlugIn;

} // namespace

// The framework's version and the build tool's, as the library presents them; the host checks
// the framework's (with VelmoPlugInUsesMfc) and only reports the build tool's.
int VelmoPlugInMfcVersion() {
    return 0x0E00;
}

int VelmoPlugInMscVersion() {
    return 1929;
}

bool VelmoPlugInUsesMfc() {
    return true;
}

// The host's plug-in interface this library was built for.
unsigned int VelmoPlugInSdkVersion() {
    return 0x8C006509u;
}

unsigned int VelmoPlugInSdkServiceRelease() {
    return 0x908C9905u;
}

// Who ships the plug-in, as the host shows it in its plug-in manager and error reports. The
// address and numbers are our own; the phone and fax numbers lie in a range kept free for
// fiction, and the domain is a reserved example one, until the team has real ones.
const wchar_t* VelmoPlugInDeveloperOrganization() {
    return L"Tarquil team";
}

const wchar_t* VelmoPlugInDeveloperAddress() {
    return L"7 Lantern Yard, Elmbridge Road, Norwick NR9 4TQ";
}

const wchar_t* VelmoPlugInDeveloperCountry() {
    return L"United Kingdom";
}

const wchar_t* VelmoPlugInDeveloperPhone() {
    return L"+44 1632 960418";
}

const wchar_t* VelmoPlugInDeveloperFax() {
    return L"+44 1632 960419";
}

const wchar_t* VelmoPlugInDeveloperEmail() {
    return L"plugins@tarquil.example";
}

const wchar_t* VelmoPlugInDeveloperWebsite() {
    return L"https://tarquil.example/";
}

const wchar_t* VelmoPlugInUpdateURL() {
    return L"https://tarquil.example/updates/";
}
