// A fresh folder under /tmp that is removed with everything in it when the object goes, and small
// whole-file helpers for what the tests put there.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <dirent.h>
#include <unistd.h>

namespace zetest {

class TempDir {
public:
    TempDir() {
        char pattern[] = "/tmp/ze_test_XXXXXX";
        path_ = ::mkdtemp(pattern) ? pattern : "";
    }
    ~TempDir() { Remove(path_); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& Path() const { return path_; }
    // The path of `name` in the folder, after writing `bytes` there.
    std::string Put(const std::string& name, const std::string& bytes) const {
        const std::string file = path_ + "/" + name;
        std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
        return file;
    }
    std::string Put(const std::string& name, const std::vector<uint8_t>& bytes) const {
        return Put(name, std::string(bytes.begin(), bytes.end()));
    }

private:
    static void Remove(const std::string& folder) {
        if (folder.empty()) return;
        if (DIR* dir = ::opendir(folder.c_str())) {
            while (dirent* entry = ::readdir(dir)) {
                const std::string name = entry->d_name;
                if (name == "." || name == "..") continue;
                const std::string full = folder + "/" + name;
                if (::unlink(full.c_str()) != 0) Remove(full);
            }
            ::closedir(dir);
        }
        ::rmdir(folder.c_str());
    }

    std::string path_;
};

inline std::string FileText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace zetest
