// Entry points that the device identifier looks up by name after loading the library.
#include "parser/TargetDbParserImpl.h"

#include <new>

using Mora::Lux::Trace::TargetDbParser;
using Mora::Lux::Trace::TargetDbParserImpl;

#define PARSER_EXPORT extern "C" __attribute__((visibility("default")))

/// A new parser, or null when it can't be made.
PARSER_EXPORT TargetDbParser* CreateParserCPP()
{
    return new (std::nothrow) TargetDbParserImpl();
}

/// Destroys a parser made by CreateParserCPP, with its document and nodes; null is ignored.
PARSER_EXPORT void DestroyParserCPPP(TargetDbParser* parser)
{
    delete parser;
}
