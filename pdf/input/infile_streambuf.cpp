#include "pdf/input/infile_streambuf.h"

#include <cstring>

infile_streambuf::infile_streambuf(std::FILE* f) : file(f), buffer(new char[kBufferSize]) {
    // Nothing to read yet: the first read goes to underflow.
    setg(buffer, buffer + kBufferSize, buffer + kBufferSize);
}

infile_streambuf::~infile_streambuf() {
    if (file)
        std::fclose(file);
    delete[] buffer;
}

infile_streambuf::int_type infile_streambuf::underflow() {
    if (gptr() < egptr())
        return traits_type::to_int_type(*gptr());
    if (!file)
        return traits_type::eof();
    const std::size_t room = static_cast<std::size_t>(egptr() - eback());
    const std::size_t got = std::fread(buffer, 1, room, file);
    if (got == 0)
        return traits_type::eof();
    // A short read moves to the top of the buffer, so the get area always ends at the
    // buffer's end.
    char* start = buffer + (kBufferSize - got);
    if (got < kBufferSize)
        std::memmove(start, buffer, got);
    setg(start, start, buffer + kBufferSize);
    return traits_type::to_int_type(*gptr());
}

infile_streambuf::pos_type infile_streambuf::seekoff(off_type offset, std::ios_base::seekdir way,
                                                     std::ios_base::openmode mode) {
    if (!(mode & std::ios_base::in) || !file)
        return pos_type(off_type(-1));
    if (offset == 0 && way == std::ios_base::cur) {
        const off_t at = ftello(file);
        if (at < 0)
            return pos_type(off_type(-1));
        return pos_type(off_type(at) - off_type(egptr() - gptr()));
    }
    const int whence = way == std::ios_base::beg   ? SEEK_SET
                       : way == std::ios_base::cur ? SEEK_CUR
                                                   : SEEK_END;
    if (fseeko(file, static_cast<off_t>(offset), whence) != 0)
        return pos_type(off_type(-1));
    setg(buffer, buffer + kBufferSize, buffer + kBufferSize); // empty get area
    return pos_type(off_type(ftello(file)));
}

infile_streambuf::pos_type infile_streambuf::seekpos(pos_type position,
                                                     std::ios_base::openmode mode) {
    return seekoff(off_type(position), std::ios_base::beg, mode);
}
