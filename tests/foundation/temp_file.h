// A file in a fresh temporary folder, removed with the folder when the object goes.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

class TempFile {
public:
    explicit TempFile(const std::vector<uint8_t>& bytes, const char* name = "data.bin") {
        char pattern[] = "/tmp/ze-foundation-XXXXXX";
        const char* dir = mkdtemp(pattern);
        folder_ = dir ? dir : "/tmp";
        path_ = folder_ + "/" + name;
        FILE* f = std::fopen(path_.c_str(), "wb");
        if (f) {
            if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), f);
            std::fclose(f);
        }
    }
    ~TempFile() {
        std::remove(path_.c_str());
        rmdir(folder_.c_str());
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    const std::string& path() const { return path_; }

private:
    std::string folder_;
    std::string path_;
};

// Bytes whose value tells their position, so that a misplaced read shows.
inline std::vector<uint8_t> PatternBytes(size_t n) {
    std::vector<uint8_t> v(n);
    for (size_t i = 0; i < n; ++i) v[i] = static_cast<uint8_t>((i * 7u + (i >> 8) * 13u) & 0xFF);
    return v;
}
