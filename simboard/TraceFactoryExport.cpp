// Entry points of libTraceFactory.so.
#include "simboard/SimTraceFactory.h"

#include <new>

extern "C" Mora::Lux::Trace::TraceFactory* CreateTraceFactory()
{
    return new (std::nothrow) Mora::Lux::Sim::SimTraceFactory();
}

extern "C" void DestroyTraceFactory(Mora::Lux::Trace::TraceFactory* factory)
{
    delete factory;
}
