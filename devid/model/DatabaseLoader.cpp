// Building the description model from the device element of one description
// file: the section dispatch and the processor, module, source and route
// loaders. Tag and attribute names are matched without regard to case.
#include "devid/CDeviceIdentifierImpl.h"
#include "devid/DevIdLog.h"
#include "devid/model/CCharacteristicImpl.h"
#include "devid/model/CMappingInfoImpl.h"
#include "devid/model/CModuleInfoImpl.h"
#include "devid/model/CProcIdentifier.h"
#include "devid/model/CRegisterInfoImpl.h"
#include "devid/model/CSourceInfoImpl.h"
#include "devid/model/CTraceRouteInfoImpl.h"
#include "devid/NumberText.h"
#include "devid/model/DatabaseText.h"
#include "devid/model/TargetDbParser.h"
#include "devid/model/TextArena.h"

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Mora {
namespace Lux {
namespace Trace {

namespace {

// The id of a mapping with entries went through a fixed buffer of this size
// in older readers; descriptions with longer ids are refused, not truncated.
const std::size_t kMappingIdLimit = 2048;

bool Present(DBNode* node, DBNode* end)
{
    return node != nullptr && node != end;
}

bool TagIs(DBNode* node, const char* tag)
{
    return DatabaseNameIs(node->GetName(), tag);
}

const char* TagOf(DBNode* node)
{
    const char* name = node->GetName();
    return name != nullptr ? name : "";
}

// Reads attributes a description cannot do without. The first one missing is
// logged with file, element and attribute; later reads then return null.
class RequiredAttributes {
public:
    explicit RequiredAttributes(const std::string& file) : m_file(file) {}

    const char* operator()(DBNode* node, const char* attribute)
    {
        if (!m_complete)
            return nullptr;
        const char* value = node->GetAttribute(attribute);
        if (value == nullptr) {
            m_complete = false;
            DevIdLog(16, "DevId: %s: %s element without required attribute \"%s\"", m_file.c_str(), TagOf(node),
                     attribute);
        }
        return value;
    }

    bool Complete() const { return m_complete; }

private:
    const std::string& m_file;
    bool m_complete = true;
};

struct RegisterTexts {
    const char* id;
    const char* address;
    const char* page;
    const char* addrunit;
    const char* width;
};

RegisterTexts ReadRegisterTexts(DBNode* node, RequiredAttributes& required)
{
    RegisterTexts texts{};
    texts.id = required(node, "id");
    texts.address = required(node, "address");
    texts.page = required(node, "page");
    texts.addrunit = required(node, "addrunit");
    texts.width = required(node, "width");
    return texts;
}

// Module registers and processor identifier registers decide memory mapping
// by different rules, so the caller passes the decision in.
void FillRegister(CRegisterInfoImpl& reg, const RegisterTexts& texts, bool memoryMapped, TextArena& arena)
{
    reg.memoryMapped = memoryMapped;
    reg.memoryPage = ParseUnsigned32(texts.page, 0);
    reg.addressableUnit = ParseUnsigned32(texts.addrunit, 0);
    reg.widthInBits = ParseUnsigned32(texts.width, 0);
    if (memoryMapped)
        reg.memoryAddress = ParseUnsigned32(texts.address, 0);
    else
        reg.driverRegisterName = arena.Copy(texts.address);
}

std::size_t CountChildren(DBNode* parent, DBNode* end)
{
    std::size_t count = 0;
    for (DBNode* child = parent->GetFirstChild(); Present(child, end); child = child->GetNextSibling())
        ++count;
    return count;
}

// Appends the characteristics listed under `container`; entries without a
// name or a value mean nothing and are dropped.
void ReadCharacteristics(DBNode* container, DBNode* end, TextArena& arena,
                         std::vector<std::unique_ptr<CCharacteristic>>& out)
{
    for (DBNode* item = container->GetFirstChild(); Present(item, end); item = item->GetNextSibling()) {
        const char* id = item->GetAttribute("id");
        const char* value = item->GetAttribute("value");
        if (id == nullptr || value == nullptr)
            continue;
        const char* description = item->GetAttribute("description");
        out.push_back(
            std::make_unique<CCharacteristicImpl>(arena.Copy(id), arena.Copy(value), arena.Copy(description)));
    }
}

// The first two non-empty runs between "." separators: the names of the key
// and value attributes of every entry.
std::pair<std::string, std::string> SplitMappingId(const char* id)
{
    std::string runs[2];
    std::size_t found = 0;
    while (found < 2 && *id != '\0') {
        const char* stop = std::strchr(id, '.');
        if (stop == nullptr)
            stop = id + std::strlen(id);
        if (stop > id)
            runs[found++].assign(id, stop);
        id = *stop == '.' ? stop + 1 : stop;
    }
    return {std::move(runs[0]), std::move(runs[1])};
}

const char* AttributeOrNull(DBNode* node, const std::string& name)
{
    return name.empty() ? nullptr : node->GetAttribute(name.c_str());
}

template <typename T>
std::vector<T*> ReleaseAll(std::vector<std::unique_ptr<T>>& owned)
{
    std::vector<T*> raw;
    raw.reserve(owned.size());
    for (auto& item : owned)
        raw.push_back(item.release());
    owned.clear();
    return raw;
}

} // namespace

CProcIdentifier* CDeviceIdentifierImpl::FindProcessor(const std::string& id)
{
    for (int attempt = 0; attempt < 2; ++attempt) {
        // The list only grows during a load; anything else (a reset, a failed
        // load dropping its processors) shows as a size or an ID that no longer
        // fits, and the index is built again.
        if (attempt > 0 || m_indexedProcs > m_procs.size()) {
            m_procById.clear();
            m_indexedProcs = 0;
        }
        for (; m_indexedProcs < m_procs.size(); ++m_indexedProcs)
            m_procById.emplace(m_procs[m_indexedProcs]->id, m_indexedProcs);
        const auto found = m_procById.find(id);
        if (found == m_procById.end())
            return nullptr;
        if (found->second < m_procs.size() && m_procs[found->second]->id == id)
            return m_procs[found->second].get();
    }
    return nullptr;
}

bool CDeviceIdentifierImpl::ParseModules(DBNode* device)
{
    if (!Present(device, m_endNode))
        return true;
    // Processors dropped by an earlier failed load may have been replaced since.
    m_procById.clear();
    m_indexedProcs = 0;
    for (DBNode* section = device->GetFirstChild(); Present(section, m_endNode);
         section = section->GetNextSibling()) {
        bool result = true;
        if (TagIs(section, "procs"))
            result = LoadProcInfo(section);
        if (TagIs(section, "sources"))
            result = LoadSourceInfo(section);
        else if (TagIs(section, "modules"))
            result = LoadModuleInfo(section);
        else if (TagIs(section, "trace_routes"))
            result = LoadTraceRouteInfo(section);
        if (!result)
            return false;
    }
    return true;
}

bool CDeviceIdentifierImpl::LoadModuleInfo(DBNode* modules)
{
    for (DBNode* node = modules->GetFirstChild(); Present(node, m_endNode); node = node->GetNextSibling()) {
        std::unique_ptr<CModuleInfoImpl> module(CreateModuleInfo(node));
        if (!module)
            return false;
        m_modules.push_back(std::move(module));
    }
    return true;
}

CModuleInfoImpl* CDeviceIdentifierImpl::CreateModuleInfo(DBNode* node)
{
    if (!Present(node, m_endNode))
        return nullptr;
    RequiredAttributes required(m_currentDeviceFile);
    const char* id = required(node, "id");
    const char* kind = required(node, "kind");
    const char* proc = required(node, "proc");
    if (!required.Complete())
        return nullptr;
    const char* version = node->GetAttribute("version");
    if (version == nullptr)
        version = "0";

    DevIdLog(1, "DevId: Module added name: %s, kind:%s, access proc:%s, version=%s", id, kind, proc, version);
    auto module = std::make_unique<CModuleInfoImpl>(id, kind, proc, version);

    // Several characteristics sections add up, in document order.
    std::vector<std::unique_ptr<CCharacteristic>> characteristics;
    for (DBNode* child = node->GetFirstChild(); Present(child, m_endNode); child = child->GetNextSibling()) {
        if (TagIs(child, "registers")) {
            module->ReserveRegisters(CountChildren(child, m_endNode));
            for (DBNode* r = child->GetFirstChild(); Present(r, m_endNode); r = r->GetNextSibling()) {
                RegisterTexts texts = ReadRegisterTexts(r, required);
                const char* type = required(r, "type");
                if (!required.Complete())
                    return nullptr;
                FillRegister(module->AddRegister(m_texts.Copy(texts.id)), texts, DatabaseNameIs(type, "mem"), m_texts);
                DevIdLog(1, "DevId: Module register added %s, %s, %s, %s, %s", texts.id, texts.address, texts.page,
                         texts.addrunit, texts.width);
            }
        } else if (TagIs(child, "characteristics")) {
            ReadCharacteristics(child, m_endNode, m_texts, characteristics);
        } else if (TagIs(child, "mapping")) {
            const char* mapId = required(child, "id");
            if (!required.Complete())
                return nullptr;
            std::vector<std::unique_ptr<CMappingInfo>> entries;
            DBNode* entry = child->GetFirstChild();
            if (Present(entry, m_endNode)) {
                if (std::strlen(mapId) >= kMappingIdLimit) {
                    DevIdLog(16, "DevId: %s: %s element with an id of %u or more characters",
                             m_currentDeviceFile.c_str(), TagOf(child), static_cast<unsigned>(kMappingIdLimit));
                    return nullptr;
                }
                std::pair<std::string, std::string> names = SplitMappingId(mapId);
                for (; Present(entry, m_endNode); entry = entry->GetNextSibling()) {
                    const char* key = AttributeOrNull(entry, names.first);
                    const char* value = AttributeOrNull(entry, names.second);
                    if (key != nullptr && value != nullptr)
                        entries.push_back(std::make_unique<CMappingInfoImpl>(m_texts.Copy(key), m_texts.Copy(value)));
                }
            }
            module->TakeMappingInfo(mapId, std::move(entries));
        }
    }
    if (!characteristics.empty())
        module->TakeCharacteristics(std::move(characteristics));

    if (const CProcIdentifier* processor = FindProcessor(proc))
        module->UpdateProcName(processor->procName);
    return module.release();
}

bool CDeviceIdentifierImpl::LoadProcInfo(DBNode* procs)
{
    for (DBNode* p = procs->GetFirstChild(); Present(p, m_endNode); p = p->GetNextSibling()) {
        auto proc = std::make_unique<CProcIdentifier>();
        if (const char* id = p->GetAttribute("id")) {
            proc->id = id;
            proc->procName = id;
        }
        if (const char* kind = p->GetAttribute("kind"))
            proc->kind = kind;
        proc->traceId = ParseSigned32(p->GetAttribute("traceid"));

        // Only the first child may be the identifier, and inside it only the
        // register and the element right after it count.
        DBNode* identifier = p->GetFirstChild();
        if (Present(identifier, m_endNode) && TagIs(identifier, "identifier")) {
            DBNode* r = identifier->GetFirstChild();
            if (Present(r, m_endNode)) {
                if (TagIs(r, "register")) {
                    RequiredAttributes required(m_currentDeviceFile);
                    RegisterTexts texts = ReadRegisterTexts(r, required);
                    if (!required.Complete())
                        return false;
                    const char* type = r->GetAttribute("type");
                    proc->idRegister = std::make_unique<CRegisterInfoImpl>(m_texts.Copy(texts.id));
                    FillRegister(*proc->idRegister, texts, type == nullptr || !DatabaseNameIs(type, "reg"), m_texts);
                }
                DBNode* value = r->GetNextSibling();
                if (Present(value, m_endNode) && TagIs(value, "value")) {
                    if (const char* idValue = value->GetAttribute("idvalue"))
                        proc->idValue = ParseUnsigned32(idValue, 0);
                }
            }
        }
        ConvertProcName(proc.get());
        m_procs.push_back(std::move(proc));
    }
    return true;
}

bool CDeviceIdentifierImpl::LoadSourceInfo(DBNode* sources)
{
    for (DBNode* s = sources->GetFirstChild(); Present(s, m_endNode); s = s->GetNextSibling()) {
        const char* id = s->GetAttribute("id");
        const char* proc = s->GetAttribute("proc");
        const char* stmMaster = s->GetAttribute("stmmaster");
        std::vector<std::string> componentNames;
        std::vector<std::unique_ptr<CCharacteristic>> characteristics;
        for (DBNode* child = s->GetFirstChild(); Present(child, m_endNode); child = child->GetNextSibling()) {
            if (TagIs(child, "components")) {
                for (DBNode* c = child->GetFirstChild(); Present(c, m_endNode); c = c->GetNextSibling()) {
                    if (const char* module = c->GetAttribute("module"))
                        componentNames.push_back(module);
                }
            } else if (TagIs(child, "characteristics")) {
                ReadCharacteristics(child, m_endNode, m_texts, characteristics);
            }
        }
        if (id == nullptr || proc == nullptr || stmMaster == nullptr)
            continue;

        // A source goes by the name of its processor.
        const CProcIdentifier* processor = FindProcessor(proc);
        const std::string name = processor != nullptr ? processor->procName : proc;
        m_sources.push_back(std::make_unique<CSourceInfoImpl>(id, name, std::move(componentNames),
                                                              ReleaseAll(characteristics),
                                                              DatabaseNameIs(stmMaster, "true")));
    }
    return true;
}

bool CDeviceIdentifierImpl::LoadTraceRouteInfo(DBNode* traceRoutes)
{
    for (DBNode* r = traceRoutes->GetFirstChild(); Present(r, m_endNode); r = r->GetNextSibling()) {
        std::string sourceId;
        std::string sinkName;
        std::string drmName;
        std::vector<std::string> linkNames;
        for (DBNode* child = r->GetFirstChild(); Present(child, m_endNode); child = child->GetNextSibling()) {
            if (TagIs(child, "source")) {
                if (const char* source = child->GetAttribute("source"))
                    sourceId = source;
            } else if (TagIs(child, "link")) {
                if (const char* module = child->GetAttribute("module"))
                    linkNames.push_back(module);
            } else if (TagIs(child, "sink")) {
                if (const char* module = child->GetAttribute("module"))
                    sinkName = module;
            } else if (TagIs(child, "pin")) {
                if (const char* module = child->GetAttribute("module"))
                    drmName = module;
            }
        }
        DevIdLog(1, "DevId: Adding route src=%s, sink=%s, drm=%s", sourceId.c_str(), sinkName.c_str(),
                 drmName.c_str());
        m_routes.push_back(std::make_unique<CTraceRouteInfoImpl>(sourceId, std::move(linkNames),
                                                                 std::move(sinkName), std::move(drmName)));
    }
    return true;
}

} // namespace Trace
} // namespace Lux
} // namespace Mora
