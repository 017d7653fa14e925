#pragma once
// IReduceObject: the common interface of all typed metadata objects.
#include <cstdint>

#include "orv/File.h"
#include "orv/SharedPtr.h"
#include "orv/Types.h"

namespace orv::reduce {

class IReduceObject {
public:
    IReduceObject() = default;
    virtual ~IReduceObject() = default;

    virtual SGuid GetTypeID() const = 0;
    virtual const char* GetName() const = 0;
    virtual bool IsCalObj() const { return false; }
    // Deep copy; version stays the new object's own.
    virtual TSharedPtr<IReduceObject> Duplicate() const = 0;
    // Restores the default payload; the base clears valid.
    virtual void Default() { valid = false; }
    // Reads this type's payload from the file's position; version is the one
    // found in the block, flags the caller's flag word.
    virtual bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags);
    virtual bool Save(TSharedPtr<IFile> file, unsigned int flags);
    virtual bool ShouldPersist(unsigned int flags) const;
    // CRC-32 and byte count of what Save writes; untouched when Save fails.
    virtual bool CalcCRC(unsigned int& crc, unsigned long& size, unsigned int flags);

    bool IsPerFrame() const { return frame != ~uint64_t(0); }
    bool IsPerPreset() const { return static_cast<uint8_t>(preset) < 255; }

    bool valid = false;
    uint64_t frame = ~uint64_t(0);
    uint8_t preset = 0xFF; // compared as a signed byte by the preset-aware lookup
    uint32_t version = 0x10000;
    bool persist = true;

protected:
    // Copies the common state that Duplicate carries over (not version).
    void CopyCommonTo(IReduceObject& target) const
    {
        target.valid = valid;
        target.frame = frame;
        target.preset = preset;
        target.persist = persist;
    }
};

using IReduceObjectPtr = TSharedPtr<IReduceObject>;

} // namespace orv::reduce
