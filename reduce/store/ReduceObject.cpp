#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

bool IReduceObject::Load(TSharedPtr<IFile>, unsigned int, unsigned int) { return false; }

bool IReduceObject::Save(TSharedPtr<IFile>, unsigned int) { return false; }

bool IReduceObject::ShouldPersist(unsigned int) const { return persist; }

bool IReduceObject::CalcCRC(unsigned int& crc, unsigned long& size, unsigned int flags)
{
    // Serialise once into a counter; the writer then saves again into the file,
    // so Save must produce the same bytes both times.
    CCalcCRC32File counter;
    TSharedPtr<IFile> file(&counter, noDestroy);
    if (!Save(file, flags)) return false;
    crc = counter.GetCRC();
    size = counter.GetSize();
    return true;
}

} // namespace orv::reduce
