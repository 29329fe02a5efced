#pragma once
// File types as the plug-in registers them, and the options of one type.

enum ImportFormat {
    ImportFormatPdf = 0,
    ImportFormatAi = 1,
    ImportFormatEps = 2,
    // A PDF-based Illustrator file; exists only during one read, never registered.
    ImportFormatAiPdf = 3,
};

enum ImportUnit { ImportUnitInch = 0, ImportUnitCm = 1, ImportUnitMm = 2, ImportUnitPoint = 3 };

struct ImportFormatOptions {
    double importScale = 1.0; // drawing length matching velmoScale, in importUnit
    double velmoScale = 1.0;  // model length of that drawing length
    bool loadText = true;
    bool boundaryCurves = false; // fills as boundary curves instead of hatches
    bool importLineWeights = false;
    bool preserveUnits = false; // scale by the two numbers, else fit to a default screen
    int importUnit = ImportUnitInch;
    bool dontShowDialog = false;
};
