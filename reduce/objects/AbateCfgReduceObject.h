#pragma once
// CAbateCfgReduceObject: how the frames of several presets merge into one.
#include <cstdint>

#include "orv/Array.h"
#include "orv/Types.h"
#include "reduce/objects/PackedRecord.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

// Selection rule of the merge; the kernels tell only 0 from non-zero.
enum EAbateMode : uint32_t {
    abateFirstNotSaturated = 0, // first preset in order whose value is not above its high limit
    abateLastBrightEnough = 1,  // last preset in order whose value is not below its low limit
};

// The packed payload: a 32-byte head and 8 entries of 32 bytes (version
// 0x20000, 288 bytes); versions 0x10001 to 0x1FFFF carry 4 entries (160 bytes).
namespace abateRecord {
inline constexpr uint32_t kSize = 288;
inline constexpr uint32_t kSizeV1 = 160;
inline constexpr uint32_t kEntries = 8;
inline constexpr uint32_t kEntriesV1 = 4;
inline constexpr uint32_t kEntrySize = 32;
struct SHead {
    uint32_t recordSize = 0;
    uint32_t version = 0;
    bool source = false;
    EAbateMode mode = abateFirstNotSaturated;
    uint8_t entryCount = 0;
};
using HeadTable = TRecordTable<SHead, 32, TField<&SHead::recordSize, 0>, TField<&SHead::version, 4>,
                               TField<&SHead::source, 8>, TField<&SHead::mode, 9, TAs<uint8_t>>,
                               TField<&SHead::entryCount, 10>, TReserved<11, 21>>;

struct SEntry {
    uint32_t entrySize = 0;
    uint8_t presetIndex = 0;
    uint16_t lowLimit = 0;
    uint16_t highLimit = 0;
};
using EntryTable = TRecordTable<SEntry, kEntrySize, TField<&SEntry::entrySize, 0>, TField<&SEntry::presetIndex, 4>,
                                TField<&SEntry::lowLimit, 5>, TField<&SEntry::highLimit, 7>, TReserved<9, 23>>;

constexpr uint32_t EntryOffset(uint32_t i) { return HeadTable::kSize + i * kEntrySize; }
static_assert(EntryOffset(kEntries) == kSize && EntryOffset(kEntriesV1) == kSizeV1);
} // namespace abateRecord

class CAbateCfgReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{12C99632-E051-4922-B9A3-A7259271C94D}");
    static constexpr const char* kName = "AbateCfg";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    // Save flag that marks the recording as the merge's source.
    static constexpr unsigned int kSaveAsSource = 16;

    CAbateCfgReduceObject();

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;
    // Restores the defaults below, with valid true.
    void Default() override;
    bool Load(TSharedPtr<IFile> file, unsigned int version, unsigned int flags) override;
    bool Save(TSharedPtr<IFile> file, unsigned int flags) override;

    bool source = false;
    uint16_t lowLimits[8];
    uint16_t highLimits[8];
    uint8_t order[8];
    EAbateMode mode = abateFirstNotSaturated;
};

// An item to be ordered by a float key, ties broken by a double key.
struct SAbateSortHelper {
    uint32_t item = 0;
    float key = 0;
    double tieKey = 0;

    // Float key ascending; on equal float keys the double key descending.
    static void Sort(TArray<SAbateSortHelper>& items);
};
static_assert(sizeof(SAbateSortHelper) == 16, "SAbateSortHelper is 16 bytes");

} // namespace orv::reduce
