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

    // Four entries up to 0x1FFFF, eight after; the rest of the local record stays zero.
    const bool four = fileVersion <= 0x1FFFF;
    const uint32_t size = four ? rec::kSizeV1 : rec::kSize;
    const uint32_t entries = four ? rec::kEntriesV1 : rec::kEntries;
    unsigned char r[rec::kSize] = {};
    if (!file->ReadBytes(r, size)) return false;
    rec::SHead head;
    rec::HeadTable::Read(r, head);
    if (head.recordSize != size || head.version > (four ? 0x1FFFFu : 0x2FFFFu) || head.entryCount != entries)
        return false;
    rec::SEntry e[rec::kEntries];
    for (uint32_t i = 0; i < rec::kEntries; ++i) rec::EntryTable::Read(r + rec::EntryOffset(i), e[i]);
    for (uint32_t i = 0; i < entries; ++i)
        if (e[i].entrySize != rec::kEntrySize) return false;

    source = head.source;
    mode = head.mode;
    for (uint32_t i = 0; i < rec::kEntries; ++i) {
        if (e[i].entrySize != 0) {
            uint8_t k = e[i].presetIndex;
            if (k > 7) k = 7; // out-of-range presets are folded onto the last one, as intended
            order[i] = k;
            lowLimits[k] = e[i].lowLimit;
            highLimits[k] = e[i].highLimit;
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
    unsigned char r[rec::kSize];
    rec::HeadTable::Write({rec::kSize, version, source || (flags & kSaveAsSource) != 0, mode,
                           static_cast<uint8_t>(rec::kEntries)},
                          r);
    for (uint32_t i = 0; i < rec::kEntries; ++i) {
        const uint8_t k = order[i] > 7 ? 7 : order[i];
        rec::EntryTable::Write({rec::kEntrySize, k, lowLimits[k], highLimits[k]}, r + rec::EntryOffset(i));
    }
    return file->WriteBytes(r, rec::kSize);
}

} // namespace orv::reduce
