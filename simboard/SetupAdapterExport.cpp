// Entry points of libSetupAdapter4.so.
#include "simboard/SimSetupAdapter.h"

#include <new>

extern "C" Mora::Lux::Trace::SetupAdapter* CreateSetupAdapter()
{
    return new (std::nothrow) Mora::Lux::Sim::SimSetupAdapter();
}

extern "C" void DestroySetupAdapter(Mora::Lux::Trace::SetupAdapter* adapter)
{
    delete adapter;
}
