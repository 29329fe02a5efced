#pragma once
// Files and folders of the host: where a plug-in may put temporary files.
#include "host/base/GK_String.h"

class CVelmoFileUtilities {
public:
    // The folder for the session's temporary files. By default a "tarquil" folder under
    // $TMPDIR, or under /tmp when that is unset or empty; SetTempFolder chooses another.
    static GK_wString GetVelmoRoamingProfileTempFolder();
    // Chooses the temporary folder for the rest of the session; an empty path restores the
    // default.
    static void SetTempFolder(const wchar_t* folder);

    static bool DirExists(const wchar_t* path);
    // Creates the folder and any missing parents; true when it exists afterwards.
    static bool CreateDir(const wchar_t* path);
    // folder + "/" + name + extension (the extension with its dot, or empty).
    static bool MakeFullPath(GK_wString& out, const wchar_t* folder, const wchar_t* name,
                             const wchar_t* extension);
};
