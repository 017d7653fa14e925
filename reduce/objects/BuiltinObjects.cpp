// The built-in reduce object types, registered in one place. The order is
// behaviour: it is the order of CReduceObjectFactory::GetNames.
#include "reduce/objects/AbateCfgReduceObject.h"
#include "reduce/objects/BrennicFrameInfoReduceObject.h"
#include "reduce/objects/ColorPalReduceObject.h"
#include "reduce/objects/CorrectionCfgReduceObject.h"
#include "reduce/objects/CorrectionReduceObject.h"
#include "reduce/objects/CorvaneCameraInfoReduceObject.h"
#include "reduce/objects/CorvaneFactoryCalReduceObject.h"
#include "reduce/objects/CorvaneFrameInfoReduceObject.h"
#include "reduce/objects/FOVReduceObject.h"
#include "reduce/objects/FrameHeaderReduceObject.h"
#include "reduce/objects/FrameInfoReduceObject.h"
#include "reduce/objects/FusionReduceObject.h"
#include "reduce/objects/MarloweFactoryCalReduceObject.h"
#include "reduce/objects/ObjectParametersReduceObject.h"
#include "reduce/objects/OmbriaCameraInfoReduceObject.h"
#include "reduce/objects/OmbriaFactoryCalReduceObject.h"
#include "reduce/objects/RCalReduceObject.h"
#include "reduce/objects/SourceInfoReduceObject.h"
#include "reduce/objects/TesselFactoryCalReduceObject.h"
#include "reduce/objects/VisualPixelDataReduceObject.h"
#include "reduce/objects/WorkspaceReduceObject.h"

namespace orv::reduce {
namespace {

bool RegisterBuiltinObjects()
{
    // Each type registers even if an earlier one failed (a failure is logged).
    bool ok = true;
    for (bool (*registerType)() : {
             &CAbateCfgReduceObject::Register,
             &CColorPalReduceObject::Register,
             &CCorrectionCfgReduceObject::Register,
             &CCorrectionReduceObject::Register,
             &CBrennicFrameInfoReduceObject::Register,
             &CFOVReduceObject::Register,
             &CFrameHeaderReduceObject::Register,
             &CFrameInfoReduceObject::Register,
             &CCorvaneCameraInfoReduceObject::Register,
             &CCorvaneFactoryCalReduceObject::Register,
             &CCorvaneFrameInfoReduceObject::Register,
             &CFusionReduceObject::Register,
             &CTesselFactoryCalReduceObject::Register,
             &CMarloweFactoryCalReduceObject::Register,
             &CObjectParametersReduceObject::Register,
             &CRCalReduceObject::Register,
             &CSourceInfoReduceObject::Register,
             &COmbriaCameraInfoReduceObject::Register,
             &COmbriaFactoryCalReduceObject::Register,
             &CVisualPixelDataReduceObject::Register,
             &CWorkspaceReduceObject::Register,
         })
        ok = registerType() && ok;
    return ok;
}

// Registered while the library loads; nothing reads the result.
[[maybe_unused]] const bool gReg = RegisterBuiltinObjects();

} // namespace
} // namespace orv::reduce
