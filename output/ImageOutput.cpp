// The image pass: each image becomes a file in the host's temporary folder (JPEG data as they
// came, anything else as a PNG) and a picture frame on the image's parallelogram.
#include "output/ImageOutput.h"

#include "graphics/PDFImage.h"
#include "host/base/CVelmoFileUtilities.h"
#include "host/base/VmFile.h"
#include "host/doc/VelmoCreatePictureFrame.h"
#include "output/PDFToVelmo.h"
#include "output/PngWriter.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace {

// Process-wide, so that the files of later imports in the same session get new names.
unsigned imageCounter = 0;

constexpr char kJpegTag[] = "JPEG:";

} // namespace

void MakeTempImagePath(GK_wString& path, const wchar_t* extension) {
    const GK_wString folder = CVelmoFileUtilities::GetVelmoRoamingProfileTempFolder();
    if (!CVelmoFileUtilities::DirExists(folder))
        CVelmoFileUtilities::CreateDir(folder);
    GK_wString name;
    name.Format(L"PDF%d_%03d", static_cast<int>(getpid()), imageCounter);
    ++imageCounter;
    CVelmoFileUtilities::MakeFullPath(path, folder, name, extension);
}

void PDFToVelmo::PlaceImage(const PDFImage& image, const PDFMatrix& matrix) {
    GK_wString path;
    const std::size_t tag = sizeof kJpegTag - 1;
    if (image.data.compare(0, tag, kJpegTag) == 0) {
        MakeTempImagePath(path, L".jpg");
        // Written as they came; a file that cannot be opened is skipped without a word.
        if (std::FILE* file = VmOpenFile(path, "wb")) {
            std::fwrite(image.data.data() + tag, 1, image.data.size() - tag, file);
            std::fclose(file);
        }
    } else {
        MakeTempImagePath(path, L".png");
        WritePng(path, image);
    }
    // The corners (0, 0), (1, 0) and (0, 1) of the image span the frame; the fourth follows.
    GK_3dPoint corner[4];
    for (int i : {0, 1, 3})
        matrix.Transform(image.corners[i][0], image.corners[i][1], corner[i].x, corner[i].y);
    const GK_3dVector xaxis = corner[1] - corner[0];
    const GK_3dVector yaxis = corner[3] - corner[0];
    const GK_Plane plane(corner[0], xaxis, yaxis);
    // The frame is asked for even when the file could not be written; its result is not
    // looked at.
    (void)VelmoCreatePictureFrame(*doc, plane, path, false, xaxis.Length(), yaxis.Length(), true,
                                  false, true);
}
