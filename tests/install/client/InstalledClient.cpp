// A debugger-side client built from nothing but the installed headers and libraries.
#include "common/source/source_utilities/uFile.h"
#include "common/source/source_utilities/uString.h"
#include "devid/CDeviceIdentifier.h"
#include "devid/target/HexkitError.h"
#include "tdf/TDFHandler.h"

#include <cstdio>
#include <vector>

int main(int, char** argv)
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

    // fpos_t is another type under _FILE_OFFSET_BITS=64; the client links either way.
    MORA_LUX::uFile self(argv[0], "rb");
    fpos_t start;
    fpos_t after;
    char magic[4];
    if (self.Open() && self.GetPosition(start) && self.Read(magic, sizeof magic) == sizeof magic &&
        self.GetPosition(after) && self.SeekToEnd() && self.SetPosition(after))
        std::printf("position %lld\n", MORA_LUX::uFile::DifferenceFILEPOS(after, start));
    self.Close();
    return 0;
}
