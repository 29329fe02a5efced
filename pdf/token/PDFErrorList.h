#pragma once
// The one list of the PDF layer's status codes and their texts. The codes double as the ids
// of the plug-in's string table, so the enumeration and the table are both made from here:
// define PDF_ERROR(code, name, text) and include this list.
// clang-format off
#define PDF_ERROR_LIST(PDF_ERROR) \
    PDF_ERROR(10001, InternalError, "Internal Error") \
    PDF_ERROR(10002, OutOfMemory, "Out of Memory") \
    PDF_ERROR(10003, CannotOpenFile, "Cannot Open File") \
    PDF_ERROR(10004, InvalidPdf, "Invalid PDF") \
    PDF_ERROR(10005, PrematureEof, "Premature End of File") \
    PDF_ERROR(10006, UnknownToken, "Unknown Token") \
    PDF_ERROR(10007, UnmatchedParen, "Unmatched '('") \
    PDF_ERROR(10008, BadCharacter, "Bad Character") \
    PDF_ERROR(10009, UnmatchedAngle, "Unmatched '<'") \
    PDF_ERROR(10010, Eof, "EOF") \
    PDF_ERROR(10011, UnmatchedBracket, "Unmatched ']'") \
    PDF_ERROR(10012, BadNumber, "Bad Number") \
    PDF_ERROR(10013, UnknownOp, "unknown op") \
    PDF_ERROR(10014, OddDictionary, "Odd number of items in dictionary") \
    PDF_ERROR(10015, KeysMustBeNames, "Dictionary keys must be names") \
    PDF_ERROR(10016, UnmatchedDictEnd, "Unmatched '>>'") \
    PDF_ERROR(10017, ExpectedDictionary, "Expected dictionary") \
    PDF_ERROR(10018, BadPrev, "trailer::Prev has bad value") \
    PDF_ERROR(10019, BadLength, "Bad length value") \
    PDF_ERROR(10020, ExpectedEndstream, "Expected 'endstream'") \
    PDF_ERROR(10021, UnknownFilter, "Unknown filter") \
    PDF_ERROR(10022, IllegalStreamCharacter, "Illegal character in stream") \
    PDF_ERROR(10023, ZlibError, "ZLIB error") \
    PDF_ERROR(10024, DataCorrupted, "data has been corrupted") \
    PDF_ERROR(10025, BadReference, "Bad reference") \
    PDF_ERROR(10026, ErrorLoadingObject, "error loading referenced object") \
    PDF_ERROR(10027, NoOpenFile, "No open file") \
    PDF_ERROR(10028, NullReference, "Null reference") \
    PDF_ERROR(10029, ExpectedArray, "expected array") \
    PDF_ERROR(10030, ExpectedStream, "Expected stream") \
    PDF_ERROR(10031, NoTypeItem, "Dict has no /Type item") \
    PDF_ERROR(10032, Continue, "continue") \
    PDF_ERROR(10033, NoCountItem, "Dict has no /Count item") \
    PDF_ERROR(10034, NoKidsItem, "Dict has no /Kids array item") \
    PDF_ERROR(10035, PageNotFound, "page not found") \
    PDF_ERROR(10036, UnknownType, "unknown /Type for dictionary") \
    PDF_ERROR(10037, OldAiFile, "Old AI file") \
    PDF_ERROR(10038, Encrypted, "File is encrypted") \
    PDF_ERROR(10039, Canceled, "Command was canceled") \
    PDF_ERROR(10040, StreamTooLarge, "A stream decodes to more data than a drawing can hold") \
    PDF_ERROR(10041, DecodeBudgetExceeded, "The file decodes to more data than a drawing can hold") \
    PDF_ERROR(10042, TooManyOperands, "Too many operands without an operator") \
    PDF_ERROR(10043, StatesTooDeep, "Graphics states nested too deeply")
// clang-format on
