// Writing and reading the FilterData value.
#include "dshow/runtime/filter_data.h"

#include <cstring>

namespace ze_dsrt {

namespace {

constexpr DWORD kVersion = 2;
constexpr size_t kHeaderSize = 16;
constexpr size_t kPinSize = 24;
constexpr size_t kTypeSize = 16;
constexpr size_t kMediumRefSize = 4;
constexpr size_t kGuidSize = 16;
constexpr size_t kMediumSize = 24;

void PutDword(std::vector<BYTE>& out, DWORD value) {
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<BYTE>(value >> shift));
}

void PutTag(std::vector<BYTE>& out, size_t index, const char* letters) {
    out.push_back(static_cast<BYTE>('0' + index));
    out.insert(out.end(), letters, letters + 3);
}

void PutGuid(std::vector<BYTE>& out, REFGUID guid) {
    PutDword(out, guid.Data1);
    out.push_back(static_cast<BYTE>(guid.Data2));
    out.push_back(static_cast<BYTE>(guid.Data2 >> 8));
    out.push_back(static_cast<BYTE>(guid.Data3));
    out.push_back(static_cast<BYTE>(guid.Data3 >> 8));
    out.insert(out.end(), guid.Data4, guid.Data4 + 8);
}

// The pool behind the pin structures: each distinct GUID once, then the mediums.
class Pool {
public:
    explicit Pool(size_t start) : start_(start) {}

    DWORD Guid(REFGUID guid) {
        for (size_t i = 0; i < guids_.size(); ++i)
            if (guids_[i] == guid) return static_cast<DWORD>(start_ + i * kGuidSize);
        guids_.push_back(guid);
        return static_cast<DWORD>(start_ + (guids_.size() - 1) * kGuidSize);
    }
    // Medium offsets are only known once every GUID is placed, so mediums get an index now and an
    // offset from MediumOffset when the structures are written.
    size_t Medium(const PinMedium& medium) {
        mediums_.push_back(medium);
        return mediums_.size() - 1;
    }
    DWORD MediumOffset(size_t index) const {
        return static_cast<DWORD>(start_ + guids_.size() * kGuidSize + index * kMediumSize);
    }
    void Append(std::vector<BYTE>& out) const {
        for (const GUID& guid : guids_) PutGuid(out, guid);
        for (const PinMedium& medium : mediums_) {
            PutGuid(out, medium.clsMedium);
            PutDword(out, medium.dw1);
            PutDword(out, medium.dw2);
        }
    }

private:
    size_t start_;
    std::vector<GUID> guids_;
    std::vector<PinMedium> mediums_;
};

// Bounds-checked little-endian reads over the value.
class Reader {
public:
    Reader(const BYTE* data, size_t size) : data_(data), size_(size) {}

    bool Dword(size_t at, DWORD* value) const {
        if (at > size_ || size_ - at < 4) return false;
        *value = static_cast<DWORD>(data_[at]) | static_cast<DWORD>(data_[at + 1]) << 8 |
                 static_cast<DWORD>(data_[at + 2]) << 16 | static_cast<DWORD>(data_[at + 3]) << 24;
        return true;
    }
    bool Tag(size_t at, const char* letters) const {
        return at <= size_ && size_ - at >= 4 && std::memcmp(data_ + at + 1, letters, 3) == 0;
    }
    bool Guid(size_t at, GUID* guid) const {
        if (at > size_ || size_ - at < kGuidSize) return false;
        Dword(at, &guid->Data1);
        guid->Data2 = static_cast<uint16_t>(data_[at + 4] | data_[at + 5] << 8);
        guid->Data3 = static_cast<uint16_t>(data_[at + 6] | data_[at + 7] << 8);
        std::memcpy(guid->Data4, data_ + at + 8, 8);
        return true;
    }
    // A GUID whose offset is stored at `at`.
    bool GuidAt(size_t at, GUID* guid) const {
        DWORD offset = 0;
        return Dword(at, &offset) && Guid(offset, guid);
    }

private:
    const BYTE* data_;
    size_t size_;
};

}  // namespace

std::vector<BYTE> WriteFilterData(const FilterRecord& record) {
    size_t structures = kHeaderSize;
    for (const PinRecord& pin : record.pins)
        structures += kPinSize + pin.types.size() * kTypeSize + pin.mediums.size() * kMediumRefSize;

    Pool pool(structures);
    std::vector<BYTE> out;
    out.reserve(structures);
    PutDword(out, kVersion);
    PutDword(out, record.merit);
    PutDword(out, static_cast<DWORD>(record.pins.size()));
    PutDword(out, 0);

    std::vector<size_t> mediumSlots;  // where each medium's offset goes, in pool order
    for (size_t i = 0; i < record.pins.size(); ++i) {
        const PinRecord& pin = record.pins[i];
        PutTag(out, i, "pi3");
        PutDword(out, pin.flags);
        PutDword(out, pin.instances);
        PutDword(out, static_cast<DWORD>(pin.types.size()));
        PutDword(out, static_cast<DWORD>(pin.mediums.size()));
        PutDword(out, pin.hasCategory ? pool.Guid(pin.category) : 0);
        for (size_t j = 0; j < pin.types.size(); ++j) {
            PutTag(out, j, "ty3");
            PutDword(out, 0);
            PutDword(out, pool.Guid(pin.types[j].major));
            PutDword(out, pool.Guid(pin.types[j].minor));
        }
        for (const PinMedium& medium : pin.mediums) {
            mediumSlots.push_back(out.size());
            pool.Medium(medium);
            PutDword(out, 0);
        }
    }
    for (size_t index = 0; index < mediumSlots.size(); ++index) {
        const DWORD offset = pool.MediumOffset(index);
        for (int k = 0; k < 4; ++k) out[mediumSlots[index] + k] = static_cast<BYTE>(offset >> (8 * k));
    }
    pool.Append(out);
    return out;
}

bool ReadFilterData(const BYTE* data, size_t size, FilterRecord* record) {
    const Reader in(data, size);
    DWORD version = 0, pinCount = 0;
    FilterRecord result;
    if (!in.Dword(0, &version) || version != kVersion || !in.Dword(4, &result.merit) || !in.Dword(8, &pinCount))
        return false;
    // Every pin takes at least kPinSize bytes, which bounds the count before anything is reserved.
    if (pinCount > size / kPinSize) return false;

    size_t at = kHeaderSize;
    for (DWORD i = 0; i < pinCount; ++i) {
        PinRecord pin;
        DWORD typeCount = 0, mediumCount = 0, categoryOffset = 0;
        if (!in.Tag(at, "pi3") || !in.Dword(at + 4, &pin.flags) || !in.Dword(at + 8, &pin.instances) ||
            !in.Dword(at + 12, &typeCount) || !in.Dword(at + 16, &mediumCount) ||
            !in.Dword(at + 20, &categoryOffset))
            return false;
        if (typeCount > size / kTypeSize || mediumCount > size / kMediumRefSize) return false;
        if (categoryOffset != 0) {
            pin.hasCategory = true;
            if (!in.Guid(categoryOffset, &pin.category)) return false;
        }
        at += kPinSize;
        for (DWORD j = 0; j < typeCount; ++j, at += kTypeSize) {
            TypePair type{};
            if (!in.Tag(at, "ty3") || !in.GuidAt(at + 8, &type.major) || !in.GuidAt(at + 12, &type.minor))
                return false;
            pin.types.push_back(type);
        }
        for (DWORD m = 0; m < mediumCount; ++m, at += kMediumRefSize) {
            DWORD offset = 0;
            PinMedium medium{};
            if (!in.Dword(at, &offset) || !in.Guid(offset, &medium.clsMedium) ||
                !in.Dword(size_t{offset} + kGuidSize, &medium.dw1) ||
                !in.Dword(size_t{offset} + kGuidSize + 4, &medium.dw2))
                return false;
            pin.mediums.push_back(medium);
        }
        result.pins.push_back(std::move(pin));
    }
    *record = std::move(result);
    return true;
}

}  // namespace ze_dsrt
