#pragma once
// Small reduce object types of the store tests, registered under test names so
// that the tests do not depend on the built-in types.
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "orv/File.h"
#include "reduce/store/InfoFile.h"
#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce::test {

inline constexpr SGuid kPayloadID = MakeGuid("{5A1E0000-0000-4000-8000-000000000001}");
inline constexpr SGuid kFailLoadID = MakeGuid("{5A1E0000-0000-4000-8000-000000000002}");
inline constexpr SGuid kNoSaveID = MakeGuid("{5A1E0000-0000-4000-8000-000000000003}");
inline constexpr SGuid kShortLoadID = MakeGuid("{5A1E0000-0000-4000-8000-000000000004}");
inline constexpr SGuid kUnknownID = MakeGuid("{5A1E0000-0000-4000-8000-0000000000FF}");
// The identifiers that flag 8 leaves out.
inline constexpr SGuid kCorrectionID = MakeGuid("{4AD3EFCE-D157-4203-BFC2-3979EE047FE4}");
inline constexpr SGuid kRCalID = MakeGuid("{E5D7371A-BD64-448F-8240-6FDFA6FC0110}");

// A value and a string; its Load runs Default() first, as real types may, and
// remembers the version and flags it was given.
class CPayloadObject : public IReduceObject {
public:
    static inline int liveCount = 0;
    CPayloadObject() { ++liveCount; }
    ~CPayloadObject() override { --liveCount; }

    SGuid GetTypeID() const override { return kPayloadID; }
    const char* GetName() const override { return "StoreTestPayload"; }
    TSharedPtr<IReduceObject> Duplicate() const override
    {
        TSharedPtr<CPayloadObject> copy =
            reduceObjectFactory().CreateByTypeID(kPayloadID).DynamicCast<CPayloadObject>();
        if (!copy) return TSharedPtr<IReduceObject>();
        CopyCommonTo(*copy);
        copy->value = value;
        copy->text = text;
        return copy;
    }
    void Default() override
    {
        IReduceObject::Default();
        preset = 7;
        frame = 0;
        value = 0;
        text = "";
    }
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override
    {
        Default();
        loadedVersion = version;
        loadedFlags = flags;
        return file->GetUInt32(value) && file->GetString(text);
    }
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override
    {
        savedFlags = flags;
        return file->PutUInt32(value) && file->PutString(text);
    }

    uint32_t value = 0;
    CString text;
    unsigned int loadedVersion = 0;
    unsigned int loadedFlags = 0;
    unsigned int savedFlags = 0;
};

// Saves four bytes; its Load always fails after reading them.
class CFailLoadObject : public IReduceObject {
public:
    SGuid GetTypeID() const override { return kFailLoadID; }
    const char* GetName() const override { return "StoreTestFailLoad"; }
    TSharedPtr<IReduceObject> Duplicate() const override { return TSharedPtr<IReduceObject>(); }
    bool Load(TSharedPtr<IFile> file, unsigned int, unsigned int) override
    {
        uint32_t v;
        file->GetUInt32(v);
        return false;
    }
    bool Save(TSharedPtr<IFile> file, unsigned int) override { return file->PutUInt32(0xFA11FA11); }
};

// Keeps the base Load and Save, which fail; persisted unless told otherwise.
class CNoSaveObject : public IReduceObject {
public:
    SGuid GetTypeID() const override { return kNoSaveID; }
    const char* GetName() const override { return "StoreTestNoSave"; }
    TSharedPtr<IReduceObject> Duplicate() const override { return reduceObjectFactory().CreateByTypeID(kNoSaveID); }
};

// Saves sixteen bytes and reads back only the first four.
class CShortLoadObject : public IReduceObject {
public:
    SGuid GetTypeID() const override { return kShortLoadID; }
    const char* GetName() const override { return "StoreTestShortLoad"; }
    TSharedPtr<IReduceObject> Duplicate() const override { return TSharedPtr<IReduceObject>(); }
    bool Load(TSharedPtr<IFile> file, unsigned int, unsigned int) override { return file->GetUInt32(first); }
    bool Save(TSharedPtr<IFile> file, unsigned int) override
    {
        return file->PutUInt32(first) && file->PutUInt32(1) && file->PutUInt32(2) && file->PutUInt32(3);
    }
    uint32_t first = 0x11223344;
};

// Any type and name, never registered: for objects the array or the writer
// only carries.
class CLooseObject : public IReduceObject {
public:
    CLooseObject(SGuid id, const char* name) : m_id(id), m_name(name) {}
    SGuid GetTypeID() const override { return m_id; }
    const char* GetName() const override { return m_name; }
    TSharedPtr<IReduceObject> Duplicate() const override { return TSharedPtr<IReduceObject>(); }
    bool Save(TSharedPtr<IFile> file, unsigned int) override { return file->PutUInt8(0x5A); }

private:
    SGuid m_id;
    const char* m_name;
};

// Registers the test types once; true when all are in the factory.
inline bool RegisterTestTypes()
{
    static const bool registered = [] {
        CReduceObjectFactory& f = reduceObjectFactory();
        bool ok = f.Register<CPayloadObject>("StoreTestPayload", kPayloadID);
        ok = f.Register<CFailLoadObject>("StoreTestFailLoad", kFailLoadID) && ok;
        ok = f.Register<CNoSaveObject>("StoreTestNoSave", kNoSaveID) && ok;
        ok = f.Register<CShortLoadObject>("StoreTestShortLoad", kShortLoadID) && ok;
        return ok;
    }();
    return registered;
}

// A payload object made by the factory, so that it dies through the factory's
// destroy function.
inline TSharedPtr<IReduceObject> Payload(uint8_t preset, uint32_t value = 0, bool valid = true, const char* text = "",
                                         uint64_t frame = ~uint64_t(0))
{
    TSharedPtr<IReduceObject> o = reduceObjectFactory().CreateByTypeID(kPayloadID);
    auto* p = o.DynamicCast<CPayloadObject>().get();
    p->preset = preset;
    p->valid = valid;
    p->value = value;
    p->text = text;
    p->frame = frame;
    return o;
}

// A growing memory file and an owning shared pointer to it.
struct SMemFile {
    CMemFile* mem = new CMemFile;
    TSharedPtr<IFile> file{mem};

    SMemFile() { mem->Create(); }
    explicit SMemFile(const std::vector<uint8_t>& bytes) : SMemFile()
    {
        if (!bytes.empty()) mem->WriteBytes(bytes.data(), static_cast<unsigned>(bytes.size()));
        mem->SeekToBegin();
    }
    std::vector<uint8_t> bytes() const { return std::vector<uint8_t>(mem->data(), mem->data() + mem->size()); }
};

template <class T>
T ReadAt(const std::vector<uint8_t>& bytes, size_t offset)
{
    T value{};
    if (offset + sizeof(T) <= bytes.size()) std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

template <class T>
void WriteAt(std::vector<uint8_t>& bytes, size_t offset, T value)
{
    if (offset + sizeof(T) <= bytes.size()) std::memcpy(bytes.data() + offset, &value, sizeof(T));
}

// The header fields of the block at offset, read through the shared table.
struct SRawHeader {
    std::string name;
    SGuid typeID;
    uint32_t version;
    int8_t preset;
    uint64_t frame;
    uint32_t flags;
    uint64_t size;
    uint32_t crc;
    bool operator==(const SRawHeader&) const = default;
};

inline void PrintTo(const SRawHeader& h, std::ostream* os)
{
    *os << '"' << h.name << "\" " << GuidToString(h.typeID).c_str() << " version " << h.version << " preset "
        << int(h.preset) << " frame " << h.frame << " flags " << h.flags << " size " << h.size << " crc " << h.crc;
}

inline SRawHeader HeaderAt(const std::vector<uint8_t>& b, size_t offset)
{
    const auto* name = reinterpret_cast<const char*>(b.data() + offset + blockHeader::name.offset);
    return {std::string(name, strnlen(name, blockHeader::name.size)),
            ReadAt<SGuid>(b, offset + blockHeader::typeID.offset),
            ReadAt<uint32_t>(b, offset + blockHeader::version.offset),
            ReadAt<int8_t>(b, offset + blockHeader::preset.offset),
            ReadAt<uint64_t>(b, offset + blockHeader::frame.offset),
            ReadAt<uint32_t>(b, offset + blockHeader::flags.offset),
            ReadAt<uint64_t>(b, offset + blockHeader::size.offset),
            ReadAt<uint32_t>(b, offset + blockHeader::crc.offset)};
}

} // namespace orv::reduce::test
