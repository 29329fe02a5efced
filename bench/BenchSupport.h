#pragma once
// Small helpers the benchmarks share.
#include <zlib.h>

#include <string>

namespace tarquil::bench {

// zlib's deflate at level 6, as producers' Flate streams are usually made.
inline std::string Deflate(const std::string& data) {
    uLongf size = compressBound(data.size());
    std::string out(size, '\0');
    compress2(reinterpret_cast<Bytef*>(out.data()), &size,
              reinterpret_cast<const Bytef*>(data.data()), data.size(), 6);
    out.resize(size);
    return out;
}

} // namespace tarquil::bench
