#include "platform/posix/registry_store.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <mutex>
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

DWORD ReadAll(int fd, std::string& text) {
    text.clear();
    char buffer[65536];
    while (true) {
        ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0) {
            if (errno == EINTR) continue;
            return ERROR_CANTREAD;
        }
        if (n == 0) return ERROR_SUCCESS;
        text.append(buffer, static_cast<size_t>(n));
    }
}

// Which version of the store file a parsed tree came from. Writers replace the file by rename, so a new
// version has a new inode; size and both times guard against an inode number used again.
struct FileVersion {
    std::string path;
    bool exists = false;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    timespec changed{};

    static FileVersion Of(const std::string& path, const struct stat* st) {
        FileVersion v;
        v.path = path;
        if (st == nullptr) return v;
        v.exists = true;
        v.device = st->st_dev;
        v.inode = st->st_ino;
        v.size = st->st_size;
        v.modified = st->st_mtim;
        v.changed = st->st_ctim;
        return v;
    }
    // One text for the whole version, for callers outside the store.
    std::string Text() const {
        if (!exists) return path + "|none";
        return path + "|" + std::to_string(device) + ":" + std::to_string(inode) + ":" + std::to_string(size) + ":" +
               std::to_string(modified.tv_sec) + "." + std::to_string(modified.tv_nsec) + ":" +
               std::to_string(changed.tv_sec) + "." + std::to_string(changed.tv_nsec);
    }
    bool operator==(const FileVersion& o) const {
        return path == o.path && exists == o.exists && device == o.device && inode == o.inode && size == o.size &&
               modified.tv_sec == o.modified.tv_sec && modified.tv_nsec == o.modified.tv_nsec &&
               changed.tv_sec == o.changed.tv_sec && changed.tv_nsec == o.changed.tv_nsec;
    }
};

// The last tree this process read or wrote, with the file version it stands for.
struct KeptStore {
    std::mutex mutex;
    FileVersion version;
    std::shared_ptr<const RegKey> tree;
};

KeptStore& Kept() {
    static KeptStore kept;
    return kept;
}

std::shared_ptr<const RegKey> KeptTree(const FileVersion& version) {
    KeptStore& kept = Kept();
    std::lock_guard<std::mutex> lock(kept.mutex);
    return kept.tree != nullptr && kept.version == version ? kept.tree : nullptr;
}

void Keep(const FileVersion& version, std::shared_ptr<const RegKey> tree) {
    KeptStore& kept = Kept();
    std::lock_guard<std::mutex> lock(kept.mutex);
    kept.version = version;
    kept.tree = std::move(tree);
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

// The tree of the file's current version: the kept one when the file is unchanged, else parsed anew.
// The version is taken from the open descriptor, so it always belongs to the bytes read.
DWORD Snapshot(const std::string& path, std::shared_ptr<const RegKey>& tree) {
    FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat st;
    if (fd.get() < 0 && errno != ENOENT) return ERROR_CANTREAD;
    if (fd.get() >= 0 && ::fstat(fd.get(), &st) != 0) return ERROR_CANTREAD;
    const FileVersion version = FileVersion::Of(path, fd.get() >= 0 ? &st : nullptr);
    tree = KeptTree(version);
    if (tree != nullptr) return ERROR_SUCCESS;
    std::string text;
    if (fd.get() >= 0) {
        const DWORD err = ReadAll(fd.get(), text);
        if (err != ERROR_SUCCESS) return err;
    }
    auto parsed = std::make_shared<RegKey>();
    ParseRegText(text, *parsed);
    EnsureStandardKeys(*parsed);
    tree = parsed;
    Keep(version, tree);
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

DWORD ReadRegistry(std::shared_ptr<const RegKey>& root) { return Snapshot(RegistryFilePath(), root); }

DWORD UpdateRegistry(const std::function<DWORD(RegKey& root, bool& modified)>& change) {
    const std::string path = RegistryFilePath();
    if (!MakeFolders(ParentFolder(path))) return ERROR_CANTWRITE;
    FileDescriptor lock(::open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    if (lock.get() < 0) return ERROR_CANTOPEN;
    while (::flock(lock.get(), LOCK_EX) != 0) {
        if (errno != EINTR) return ERROR_CANTOPEN;
    }
    std::shared_ptr<const RegKey> current;
    DWORD err = Snapshot(path, current);
    if (err != ERROR_SUCCESS) return err;
    auto root = std::make_shared<RegKey>(CopyRegKey(*current));
    bool modified = false;
    err = change(*root, modified);
    if (err != ERROR_SUCCESS || !modified) return err;
    err = Publish(path, FormatRegText(*root));
    // Still under the lock, so the file now is the one just written.
    struct stat st;
    if (err == ERROR_SUCCESS && ::stat(path.c_str(), &st) == 0) Keep(FileVersion::Of(path, &st), std::move(root));
    return err;  // the lock goes with `lock`
}

}  // namespace ze_posix

std::string ZeRegistryStorePath() { return ze_posix::RegistryFilePath(); }

std::string ZeRegistryStoreVersion() {
    const std::string path = ze_posix::RegistryFilePath();
    struct stat st;
    const bool exists = ::stat(path.c_str(), &st) == 0;
    return ze_posix::FileVersion::Of(path, exists ? &st : nullptr).Text();
}
