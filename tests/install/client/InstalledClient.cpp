// A debugger-side client built from nothing but the installed headers and libraries.
#include "common/source/source_utilities/uString.h"
#include "devid/CDeviceIdentifier.h"
#include "devid/target/HexkitError.h"
#include "tdf/TDFHandler.h"

#include <cstdio>
#include <vector>

int main()
{
    using namespace Mora::Lux::Trace;
    CDeviceIdentifier* identifier = CreateDeviceIdentifier();
    if (identifier == nullptr) {
        std::puts("no device identifier");
        return 1;
    }
    const std::vector<CTraceRouteInfo*> routes = identifier->GetTraceRoutes();
    CSourceInfo* source = routes.empty() ? nullptr : routes.front()->GetSourceInfo();
    CModuleInfo* sink = routes.empty() ? nullptr : routes.front()->GetSinkInfo();
    std::printf("routes %u, first %s -> %s\n", static_cast<unsigned>(routes.size()),
                source ? source->GetName().c_str() : "-", sink ? sink->GetName().c_str() : "-");
    DestroyDeviceIdentifier(identifier, false);

    // The container, the support classes and the tools library's exception are
    // reached through the installed headers as well.
    try {
        TDFHandler().CreateTDFFile("no-extension");
    } catch (const Mora::Lux::Hexkit::HexkitError& error) {
        std::printf("TDF: %s\n", error.what());
    }
    std::printf("0x1F = %u\n", MORA_LUX::uString::ToNumeric<unsigned int>("0x1F"));
    return 0;
}
