#include "platform/posix/registry_store.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/registry_text.h"
#include "platform/win32_registry.h"

namespace ze_posix {

namespace {

// A descriptor that is closed on every path.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) ::close(fd_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return fd_; }
    int release() {
        int fd = fd_;
        fd_ = -1;
        return fd;
    }

private:
    int fd_;
};

std::string ParentFolder(const std::string& path) {
    size_t slash = path.rfind('/');
    if (slash == std::string::npos) return std::string();
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

// Creates the folder and every missing parent.
bool MakeFolders(const std::string& folder) {
    if (folder.empty()) return true;
    struct stat st;
    if (::stat(folder.c_str(), &st) == 0) return S_ISDIR(st.st_mode);
    if (!MakeFolders(ParentFolder(folder))) return false;
    return ::mkdir(folder.c_str(), 0777) == 0 || errno == EEXIST;
}

DWORD ReadWholeFile(const std::string& path, std::string& text) {
    text.clear();
    FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.get() < 0) return errno == ENOENT ? ERROR_SUCCESS : ERROR_CANTREAD;
    char buffer[16384];
    while (true) {
        ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0) {
            if (errno == EINTR) continue;
            return ERROR_CANTREAD;
        }
        if (n == 0) return ERROR_SUCCESS;
        text.append(buffer, static_cast<size_t>(n));
    }
}

bool WriteAll(int fd, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        done += static_cast<size_t>(n);
    }
    return true;
}

DWORD Publish(const std::string& path, const std::string& text) {
    static std::atomic<unsigned> sequence{0};
    const std::string temp = path + ".tmp." + std::to_string(::getpid()) + "." + std::to_string(sequence++);
    FileDescriptor fd(::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (fd.get() < 0) return ERROR_CANTWRITE;
    const bool written = WriteAll(fd.get(), text);
    const bool closed = ::close(fd.release()) == 0;
    if (!written || !closed || ::rename(temp.c_str(), path.c_str()) != 0) {
        ::unlink(temp.c_str());
        return ERROR_CANTWRITE;
    }
    return ERROR_SUCCESS;
}

DWORD LoadFrom(const std::string& path, RegKey& root) {
    std::string text;
    DWORD err = ReadWholeFile(path, text);
    if (err != ERROR_SUCCESS) return err;
    root = RegKey();
    ParseRegText(text, root);
    EnsureStandardKeys(root);
    return ERROR_SUCCESS;
}

}  // namespace

std::string RegistryFilePath() {
    const char* explicitPath = std::getenv("ZE_REGISTRY_FILE");
    if (explicitPath != nullptr && explicitPath[0] != '\0') return explicitPath;
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    if (dataHome != nullptr && dataHome[0] == '/') return std::string(dataHome) + "/zeavireader/registry.reg";
    const char* home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "") + "/.local/share/zeavireader/registry.reg";
}

DWORD LoadRegistry(RegKey& root) { return LoadFrom(RegistryFilePath(), root); }

DWORD UpdateRegistry(const std::function<DWORD(RegKey& root, bool& modified)>& change) {
    const std::string path = RegistryFilePath();
    if (!MakeFolders(ParentFolder(path))) return ERROR_CANTWRITE;
    FileDescriptor lock(::open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    if (lock.get() < 0) return ERROR_CANTOPEN;
    while (::flock(lock.get(), LOCK_EX) != 0) {
        if (errno != EINTR) return ERROR_CANTOPEN;
    }
    RegKey root;
    DWORD err = LoadFrom(path, root);
    if (err != ERROR_SUCCESS) return err;
    bool modified = false;
    err = change(root, modified);
    if (err != ERROR_SUCCESS || !modified) return err;
    return Publish(path, FormatRegText(root));  // the lock goes with `lock`
}

}  // namespace ze_posix
