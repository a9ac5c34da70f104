#include "cli/DeviceCommands.h"

#include "cli/DeviceSurvey.h"
#include "cli/DotWriter.h"
#include "cli/TdfSectionReader.h"
#include "cli/ToolEnvironment.h"
#include "cli/ToolError.h"
#include "devid/CDeviceIdentifierImpl.h"
#include "devid/target/HexkitError.h"
#include "tdf/TDFHandler.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <system_error>

namespace devid_cli {

namespace {

bool IsDevidSection(const TdfSectionView& section) { return section.name == "DEVID" && section.version == 1; }

std::string ReadText(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// One line per name, for shell completion: an offline session lists a
// description once per saved device ID, so names repeat there.
void PrintNames(const ProcessorsView& view, std::ostream& out)
{
    std::set<std::string> printed;
    for (const SourceView& source : view.sources)
        if (printed.insert(source.name).second)
            out << source.name << '\n';
}

} // namespace

void DeviceCommands::Run()
{
    const ToolEnvironment environment = ToolEnvironment::Prepare(m_options);
    DeviceSession session;
    if (!m_options.loadFile.empty()) {
        const LoadView loaded = session.LoadConfiguration(m_options.loadFile);
        if (!m_options.names)
            m_formatter.Configuration(loaded);
    }
    DeviceSurvey survey(session);

    switch (m_options.command) {
    case Command::Identify:
    case Command::Load: {
        IdentifyView view = survey.Identification();
        view.databaseDir = environment.databaseDir();
        view.boardDir = environment.boardDir();
        m_formatter.Identification(view);
        if (!view.matched)
            throw ToolError(ErrorKind::NoDevice,
                            "no device description in " +
                                (view.databaseDir.empty() ? std::string("the database") : view.databaseDir) +
                                " matches the device IDs read");
        break;
    }
    case Command::Procs: {
        const ProcessorsView view = survey.Processors();
        if (!m_options.names)
            m_formatter.Processors(view);
        else
            PrintNames(view, m_out);
        break;
    }
    case Command::Proc: {
        const SourceView source = survey.Processor(m_options.procName);
        m_formatter.Processor(source, survey.Routes(m_options.procName));
        break;
    }
    case Command::Routes:
        if (m_options.dot)
            DotWriter::Write(m_out, survey.Routes(m_options.procName));
        else
            m_formatter.Routes(survey.Routes(m_options.procName));
        break;
    case Command::Settings:
        m_formatter.Settings(survey.Settings(m_options.procName));
        break;
    case Command::Save:
        Save(session);
        break;
    default:
        throw ToolError(ErrorKind::Internal, "not a device command");
    }
}

void DeviceCommands::Save(DeviceSession& session)
{
    SaveView view;
    view.tdf = m_options.saveTdf;
    if (view.tdf) {
        SaveTdf(session, view);
    } else {
        // The library writes <trace logging folder>/<name>.dim, so only a base name makes sense.
        std::string name = m_options.saveFile;
        if (name.find('/') != std::string::npos)
            throw ToolError(ErrorKind::Usage, "save takes a name, not a path: the .dim file always goes to " +
                                                  ToolEnvironment::TraceLoggingDir());
        const std::string extension = ".dim";
        if (name.size() > extension.size() && name.compare(name.size() - extension.size(), extension.size(), extension) == 0)
            name.resize(name.size() - extension.size());
        view.path = ToolEnvironment::TraceLoggingDir() + "/" + name + extension;
        if (!session.device().SaveConfiguration(name, Mora::Lux::Trace::eTraceDataFileDCM))
            throw ToolError(ErrorKind::File, "cannot write " + view.path +
                                                 ": the folder is not writable, the disk is full, a name is empty or "
                                                 "holds '$', '~' or a line end, or a line would pass 16383 characters");
        view.text = ReadText(view.path);
    }
    m_formatter.Saved(view);
    if (session.impl().GetDeviceIds().empty())
        throw ToolError(ErrorKind::NoDevice, "no device ID was read: the saved configuration identifies nothing");
}

void DeviceCommands::SaveTdf(DeviceSession& session, SaveView& view)
{
    view.path = m_options.saveFile;
    std::error_code ignored;
    if (!std::filesystem::exists(view.path, ignored)) {
        try {
            Mora::Lux::Trace::TDFHandler().CreateTDFFile(view.path.c_str());
        } catch (const Mora::Lux::Hexkit::HexkitError& error) {
            throw ToolError(ErrorKind::File, "cannot create " + view.path + ": " + error.what());
        }
    }
    std::string damage;
    const std::vector<TdfSectionView> before = TdfSectionReader::List(view.path, damage);
    if (!damage.empty())
        throw ToolError(ErrorKind::File, view.path + ": " + damage + "; not appending to it");

    // The library reports false for TDF whether it wrote or not; the file tells.
    session.device().SaveConfiguration(view.path, Mora::Lux::Trace::eTraceDataFileTDF);
    const std::vector<TdfSectionView> after = TdfSectionReader::List(view.path, damage);
    if (after.size() != before.size() + 1 || !IsDevidSection(after.back()) || after.back().dataLength == 0)
        throw ToolError(ErrorKind::File, "no DEVID section was written to " + view.path);
    view.sectionOffset = after.back().offset;
    view.sectionLength = after.back().length;
    for (const TdfSectionView& section : before)
        view.shadowed = view.shadowed || IsDevidSection(section);
    view.text = TdfSectionReader::ReadData(view.path, after.back());
}

} // namespace devid_cli
