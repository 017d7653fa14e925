#include "reduce/objects/FusionReduceObject.h"

#include <cstring>

#include "orv/Memory.h"
#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {

bool CFusionReduceObject::Register() { return reduceObjectFactory().Register<CFusionReduceObject>(kName, typeID); }

CFusionReduceObject::CFusionReduceObject() = default;

CFusionReduceObject::~CFusionReduceObject() { Free(m_block); }

void CFusionReduceObject::Init(SFusion* data, unsigned int size, unsigned int word)
{
    m_size = size;
    m_word = word;
    Free(m_block);
    m_block = nullptr;
    if (!data || size == 0) {
        m_size = 0;
        return;
    }
    void* block = Alloc(size);
    if (!block) {
        m_size = 0;
        return;
    }
    std::memset(block, 0, size);
    std::memcpy(block, data, size);
    m_block = static_cast<SFusion*>(block);
}

TSharedPtr<IReduceObject> CFusionReduceObject::Duplicate() const
{
    TSharedPtr<IReduceObject> copy = reduceObjectFactory().CreateByTypeID(typeID);
    auto* target = dynamic_cast<CFusionReduceObject*>(copy.get());
    if (!target) return TSharedPtr<IReduceObject>();
    CopyCommonTo(*target);
    target->Init(m_block, m_size, m_word);
    return copy;
}

} // namespace orv::reduce
