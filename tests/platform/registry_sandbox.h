// A private registry file for one test: ZE_REGISTRY_FILE points into a fresh temporary folder while the
// sandbox lives, and the earlier setting comes back afterwards.
#pragma once

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include <dirent.h>
#include <unistd.h>

class RegistrySandbox {
public:
    RegistrySandbox() {
        char folder[] = "/tmp/ze_registry_XXXXXX";
        folder_ = ::mkdtemp(folder) ? folder : "";
        path_ = folder_ + "/registry.reg";
        const char* old = std::getenv("ZE_REGISTRY_FILE");
        hadOld_ = old != nullptr;
        if (hadOld_) old_ = old;
        ::setenv("ZE_REGISTRY_FILE", path_.c_str(), 1);
    }
    ~RegistrySandbox() {
        if (hadOld_)
            ::setenv("ZE_REGISTRY_FILE", old_.c_str(), 1);
        else
            ::unsetenv("ZE_REGISTRY_FILE");
        RemoveFolder(folder_);
    }
    RegistrySandbox(const RegistrySandbox&) = delete;
    RegistrySandbox& operator=(const RegistrySandbox&) = delete;

    const std::string& Folder() const { return folder_; }
    const std::string& Path() const { return path_; }

    std::string FileText() const {
        std::ifstream in(path_, std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }
    void WriteFileText(const std::string& text) const {
        std::ofstream out(path_, std::ios::binary | std::ios::trunc);
        out << text;
    }

private:
    static void RemoveFolder(const std::string& folder) {
        if (folder.empty()) return;
        if (DIR* dir = ::opendir(folder.c_str())) {
            while (dirent* entry = ::readdir(dir)) {
                const std::string name = entry->d_name;
                if (name == "." || name == "..") continue;
                const std::string full = folder + "/" + name;
                if (::unlink(full.c_str()) != 0) RemoveFolder(full);
            }
            ::closedir(dir);
        }
        ::rmdir(folder.c_str());
    }

    std::string folder_;
    std::string path_;
    std::string old_;
    bool hadOld_ = false;
};
