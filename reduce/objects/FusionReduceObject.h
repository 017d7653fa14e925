#pragma once
// CFusionReduceObject: a camera's fusion settings block, carried as is.
#include <cstdint>

#include "orv/Types.h"
#include "reduce/objects/SceneBlocks.h"
#include "reduce/store/ReduceObject.h"

namespace orv::reduce {

class CFusionReduceObject : public IReduceObject {
public:
    static constexpr SGuid typeID = MakeGuid("{4731768C-73A3-4948-A921-5EF39FD1ABD8}");
    static constexpr const char* kName = "Fusion";
    static SGuid classTypeID() { return typeID; }
    static bool Register();

    CFusionReduceObject();
    ~CFusionReduceObject() override;
    CFusionReduceObject(const CFusionReduceObject&) = delete;
    CFusionReduceObject& operator=(const CFusionReduceObject&) = delete;

    SGuid GetTypeID() const override { return typeID; }
    const char* GetName() const override { return kName; }
    TSharedPtr<IReduceObject> Duplicate() const override;

    // Keeps a copy of size bytes of the block.
    void Init(SFusion* data, unsigned int size, unsigned int word);

    const SFusion* block() const { return m_block; }
    unsigned int blockSize() const { return m_size; }
    unsigned int word() const { return m_word; }

private:
    SFusion* m_block = nullptr;
    unsigned int m_size = 0;
    unsigned int m_word = 0;
};

} // namespace orv::reduce
