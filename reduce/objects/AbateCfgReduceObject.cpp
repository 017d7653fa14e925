#include "reduce/objects/AbateCfgReduceObject.h"

#include <cstdlib>
#include <cstring>

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace rec = abateRecord;

namespace {

constexpr uint16_t kDefaultLow = 1000;
constexpr uint16_t kDefaultHigh = 15000;

int sortitasc(const void* a, const void* b)
{
    const auto* x = static_cast<const SAbateSortHelper*>(a);
    const auto* y = static_cast<const SAbateSortHelper*>(b);
    if (x->key < y->key) return -1;
    if (x->key > y->key) return 1;
    // Equal float keys: the larger double key first.
    if (x->tieKey > y->tieKey) return -1;
    if (x->tieKey < y->tieKey) return 1;
    return 0;
}

} // namespace

void SAbateSortHelper::Sort(TArray<SAbateSortHelper>& items)
{
    if (items.size() > 1) std::qsort(items.data(), items.size(), sizeof(SAbateSortHelper), sortitasc);
}

bool CAbateCfgReduceObject::Register() { return reduceObjectFactory().Register<CAbateCfgReduceObject>(kName, typeID); }

CAbateCfgReduceObject::CAbateCfgReduceObject()
{
    version = 0x20000;
    Default();
}

TSharedPtr<IReduceObject> CAbateCfgReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CAbateCfgReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->source = source;
    std::memcpy(target->lowLimits, lowLimits, sizeof lowLimits);
    std::memcpy(target->highLimits, highLimits, sizeof highLimits);
    std::memcpy(target->order, order, sizeof order);
    target->mode = mode;
    return copy;
}

void CAbateCfgReduceObject::Default()
{
    valid = true;
    source = false;
    for (unsigned i = 0; i < 8; ++i) {
        lowLimits[i] = kDefaultLow;
        highLimits[i] = kDefaultHigh;
        order[i] = static_cast<uint8_t>(i);
    }
    mode = abateFirstNotSaturated;
}

bool CAbateCfgReduceObject::Load(TSharedPtr<IFile> file, unsigned int fileVersion, unsigned int /*flags*/)
{
    if (!file) return false;
    if (fileVersion <= 0x10000) {
        // Typed stream of four presets; entries 4 to 7 keep their state.
        bool src = false;
        uint8_t m = 0;
        if (!file->GetBool(src) || !file->GetUInt8(m)) return false;
        source = src;
        mode = static_cast<EAbateMode>(m);
        for (unsigned i = 0; i < 4; ++i)
            if (!file->GetUInt16(lowLimits[i]) || !file->GetUInt16(highLimits[i])) return false;
        for (unsigned i = 0; i < 4; ++i)
            if (!file->GetUInt8(order[i])) return false;
        return true;
    }

    unsigned char r[rec::kSize] = {};
    if (fileVersion <= 0x1FFFF) {
        // Four entries; the rest of the local record stays zero.
        if (!file->ReadBytes(r, rec::kSizeV1)) return false;
        if (GetRecordValue<uint32_t>(r, rec::recordSize) != rec::kSizeV1 ||
            GetRecordValue<uint32_t>(r, rec::version) > 0x1FFFF ||
            GetRecordValue<uint8_t>(r, rec::entryCount) != rec::kEntriesV1)
            return false;
        for (uint32_t i = 0; i < rec::kEntriesV1; ++i)
            if (GetRecordValue<uint32_t>(r + rec::EntryOffset(i), rec::entry::entrySize) != rec::kEntrySize)
                return false;
    } else {
        if (!file->ReadBytes(r, rec::kSize)) return false;
        if (GetRecordValue<uint32_t>(r, rec::recordSize) != rec::kSize ||
            GetRecordValue<uint32_t>(r, rec::version) > 0x2FFFF ||
            GetRecordValue<uint8_t>(r, rec::entryCount) != rec::kEntries)
            return false;
        for (uint32_t i = 0; i < rec::kEntries; ++i)
            if (GetRecordValue<uint32_t>(r + rec::EntryOffset(i), rec::entry::entrySize) != rec::kEntrySize)
                return false;
    }

    source = GetRecordBool(r, rec::source);
    mode = static_cast<EAbateMode>(GetRecordValue<uint8_t>(r, rec::mode));
    for (uint32_t i = 0; i < rec::kEntries; ++i) {
        const unsigned char* e = r + rec::EntryOffset(i);
        if (GetRecordValue<uint32_t>(e, rec::entry::entrySize) != 0) {
            uint8_t k = GetRecordValue<uint8_t>(e, rec::entry::presetIndex);
            if (k > 7) k = 7; // out-of-range presets are folded onto the last one, as intended
            order[i] = k;
            lowLimits[k] = GetRecordValue<uint16_t>(e, rec::entry::lowLimit);
            highLimits[k] = GetRecordValue<uint16_t>(e, rec::entry::highLimit);
        } else {
            lowLimits[i] = kDefaultLow;
            highLimits[i] = kDefaultHigh;
            order[i] = static_cast<uint8_t>(i);
        }
    }
    return true;
}

bool CAbateCfgReduceObject::Save(TSharedPtr<IFile> file, unsigned int flags)
{
    if (!file) return false;
    unsigned char r[rec::kSize] = {};
    PutRecordValue<uint32_t>(r, rec::recordSize, rec::kSize);
    PutRecordValue<uint32_t>(r, rec::version, version);
    PutRecordBool(r, rec::source, source || (flags & kSaveAsSource) != 0);
    PutRecordValue<uint8_t>(r, rec::mode, static_cast<uint8_t>(mode));
    PutRecordValue<uint8_t>(r, rec::entryCount, rec::kEntries);
    for (uint32_t i = 0; i < rec::kEntries; ++i) {
        unsigned char* e = r + rec::EntryOffset(i);
        uint8_t k = order[i] > 7 ? 7 : order[i];
        PutRecordValue<uint32_t>(e, rec::entry::entrySize, rec::kEntrySize);
        PutRecordValue<uint8_t>(e, rec::entry::presetIndex, k);
        PutRecordValue<uint16_t>(e, rec::entry::lowLimit, lowLimits[k]);
        PutRecordValue<uint16_t>(e, rec::entry::highLimit, highLimits[k]);
    }
    return file->WriteBytes(r, rec::kSize);
}

} // namespace orv::reduce
