// A whole file mapped read-only: the memcpy baselines copy out of it, as our file layer does.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>
#include <string>

class MappedFile {
public:
    explicit MappedFile(const std::string& path)
    {
        const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        struct stat st;
        if (fd < 0 || fstat(fd, &st) != 0) {
            if (fd >= 0)
                close(fd);
            throw std::runtime_error("cannot open " + path);
        }
        m_size = static_cast<size_t>(st.st_size);
        void* p = mmap(nullptr, m_size, PROT_READ, MAP_SHARED, fd, 0);
        close(fd);
        if (p == MAP_FAILED)
            throw std::runtime_error("cannot map " + path);
        m_data = static_cast<const uint8_t*>(p);
    }
    ~MappedFile() { munmap(const_cast<uint8_t*>(m_data), m_size); }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    const uint8_t* data() const { return m_data; }
    size_t size() const { return m_size; }

private:
    const uint8_t* m_data = nullptr;
    size_t m_size = 0;
};
