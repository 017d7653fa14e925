#include "reduce/objects/MarloweFactoryCalReduceObject.h"

#include <algorithm>
#include <cstring>

#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

namespace rec = marloweRecord;

namespace {

uint64_t TableBytes(int32_t n) { return n > 0 ? static_cast<uint64_t>(n) * sizeof(double) : 0; }

// Two tables of n doubles that the stream can hold and one read can move: a
// larger count is corrupt, refused before anything is allocated.
bool TablesFit(int32_t n, IFile& f) { return TableBytes(n) <= 0xFFFFFFFFu && 2 * TableBytes(n) <= f.GetRemaining(); }

} // namespace

bool CMarloweFactoryCalReduceObject::Register()
{
    return reduceObjectFactory().Register<CMarloweFactoryCalReduceObject>(kName, typeID);
}

CMarloweFactoryCalReduceObject::CMarloweFactoryCalReduceObject() { version = 0x10001; }

CMarloweFactoryCalReduceObject::~CMarloweFactoryCalReduceObject() { CreateLUT(0); }

bool CMarloweFactoryCalReduceObject::CreateLUT(int n)
{
    delete[] tableA;
    delete[] tableB;
    tableA = tableB = nullptr;
    tableSize = 0;
    if (n > 0) {
        tableA = new double[static_cast<size_t>(n)]();
        tableB = new double[static_cast<size_t>(n)]();
        tableSize = n;
    }
    return true;
}

void CMarloweFactoryCalReduceObject::CopyFieldsTo(CMarloweFactoryCalReduceObject& target) const
{
    // The record's fields only: its version and table size are written, not copied.
    rec::Table::Copy(*this, target);
}

TSharedPtr<IReduceObject> CMarloweFactoryCalReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CMarloweFactoryCalReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    rec::Table::Copy(*this, *target);
    target->CreateLUT(tableSize);
    if (tableSize > 0) {
        std::copy(tableA, tableA + tableSize, target->tableA);
        std::copy(tableB, tableB + tableSize, target->tableB);
    }
    return copy;
}

void CMarloweFactoryCalReduceObject::Default()
{
    IReduceObject::Default();
    CMarloweFactoryCalReduceObject zero;
    rec::Table::Copy(zero, *this);
    CreateLUT(0);
}

bool CMarloweFactoryCalReduceObject::Load(TSharedPtr<IFile> file, unsigned int fileVersion, unsigned int /*flags*/)
{
    if (!file) return false;
    IFile& f = *file;
    if (fileVersion <= 0x10000) {
        bool ok = f.GetInt32(polyOrder);
        for (double& c : coeffs) ok = ok && f.GetFlt64(c);
        ok = ok && f.GetFlt64(signalOffset) && f.GetFlt64(rbfR) && f.GetFlt64(rbfB) && f.GetFlt64(rbfF);
        int32_t n = 0;
        ok = ok && f.GetInt32(n);
        if (!ok) return false;
        // Tables longer than the stream are corrupt: refuse before allocating.
        if (!TablesFit(n, f)) return false;
        CreateLUT(n);
        if (tableSize > 0) {
            const unsigned int bytes = static_cast<unsigned int>(tableSize) * 8;
            if (!f.ReadBytes(tableA, bytes) || !f.ReadBytes(tableB, bytes)) return false;
        }
        ok = f.GetInt32(tableKind);
        for (double& e : extra) ok = ok && f.GetFlt64(e);
        return ok && f.GetFlt64(atmX) && f.GetFlt64(atmA1) && f.GetFlt64(atmA2) && f.GetFlt64(atmB1) &&
               f.GetFlt64(atmB2) && f.GetFlt32(minTemperature) && f.GetFlt32(maxTemperature) &&
               f.GetFlt32(minRadiance) && f.GetFlt32(maxRadiance) && f.GetUInt16(minCounts) &&
               f.GetUInt16(maxCounts);
    }

    unsigned char r[rec::kSize];
    if (!f.ReadBytes(r, rec::kSize)) return false;
    if (Get(r, kRecordSize) != rec::kSize || Get(r, kRecordVersion) > 0x1FFFF) return false;
    const int32_t n = Get(r, rec::tableSize);
    if (!TablesFit(n, f)) return false;
    rec::Table::Read(r, *this);
    CreateLUT(n);
    if (tableSize > 0) {
        const unsigned int bytes = static_cast<unsigned int>(tableSize) * 8;
        if (!f.ReadBytes(tableA, bytes) || !f.ReadBytes(tableB, bytes)) return false;
    }
    return true;
}

bool CMarloweFactoryCalReduceObject::Save(TSharedPtr<IFile> file, unsigned int /*flags*/)
{
    if (!file) return false;
    unsigned char r[rec::kSize];
    rec::Table::Write(*this, r);
    const int32_t n = tableSize > 0 && tableA && tableB && TableBytes(tableSize) <= 0xFFFFFFFFu ? tableSize : 0;
    Put(r, rec::tableSize, n);
    if (!file->WriteBytes(r, rec::kSize)) return false;
    if (n > 0) {
        const unsigned int bytes = static_cast<unsigned int>(n) * 8;
        if (!file->WriteBytes(tableA, bytes) || !file->WriteBytes(tableB, bytes)) return false;
    }
    return true;
}

} // namespace orv::reduce
