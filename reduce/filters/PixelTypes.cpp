#include "reduce/filters/PixelTypes.h"

#include <cstring>

#include "orv/String.h"

namespace orv::reduce {

unsigned RegisterPixelTypeRows(const char* handler)
{
    unsigned count = 0;
    for (const SPixelTypeRow& row : pixelTypeTable) {
        const bool mine = handler ? (row.handler && std::strcmp(row.handler, handler) == 0) : !row.handler;
        if (mine && RegisterPixelType(row.id, CString(row.name), row.bytes, row.dataType, row.base)) ++count;
    }
    return count;
}

} // namespace orv::reduce
