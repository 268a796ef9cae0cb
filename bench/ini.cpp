// SPDX-License-Identifier: MIT
#include <fstream>
#include <random>

#include <wx/fileconf.h>
#include <wx/textfile.h>

#include "bench/Bench.h"
#include "toolkit/encoding/UTF8.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/files/Settings.h"

#ifdef BENCH_QT
#include <QSettings>
#include <QStringList>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_SIMPLEINI
#define SI_NO_CONVERSION
#include <SimpleIni.h>
#endif
#ifdef BENCH_INIH
#include <ini.h>
#endif
#ifdef BENCH_INIREADER
#include <INIReader.h>
#endif
#ifdef BENCH_POCO
#include <Poco/Util/IniFileConfiguration.h>
#endif

using namespace Toolkit;

namespace
{

const std::size_t s_uSections = 100;
const std::size_t s_uKeys = 100;

std::filesystem::path WriteSettings(std::size_t sections)
{
    const std::filesystem::path path =
        ToolkitBench::Folder() / ("settings" + std::to_string(sections) + ".ini");
    std::ofstream file(path);
    for (std::size_t section = 0; section < sections; ++section)
    {
        file << "[section" << section << "]\n";
        for (std::size_t key = 0; key < s_uKeys; ++key)
            file << "key" << key << "=value " << key << "\n";
    }
    return path;
}

#ifdef BENCH_QT
std::vector<std::filesystem::path> CopiesOf(const std::filesystem::path& path)
{
    std::vector<std::filesystem::path> copies;
    for (int i = 0; i < 64; ++i)
    {
        copies.push_back(path.string() + std::to_string(i));
        std::filesystem::copy_file(path, copies.back());
    }
    return copies;
}

QStringList SectionNames()
{
    QStringList names;
    for (std::size_t section = 0; section < s_uSections; ++section)
        names.append(QString("section%1").arg(section));
    return names;
}
#endif

// Calls `look(section, key)` with one of all the names, picked at random.
template <class Text, class Make, class Look>
auto RandomLookUp(Make make, Look look)
{
    std::vector<std::pair<Text, Text>> names;
    std::mt19937 random(5);
    for (int i = 0; i < 4096; ++i)
        names.emplace_back(make("section" + std::to_string(random() % s_uSections)),
                           make("key" + std::to_string(random() % s_uKeys)));
    return [names, look, next = std::size_t{0}]() mutable
    {
        const auto& name = names[++next % names.size()];
        look(name.first, name.second);
    };
}

// Not every peer is there, and not every one takes its names like this.
[[maybe_unused]] std::string Narrow(const std::string& text)
{
    return text;
}

} // namespace

void ToolkitBench::Register()
{
    const std::filesystem::path path = WriteSettings(s_uSections);
    const TString<wchar_t> widePath = UTF8::ToUNICODE(TString<char>(path.string()));
    const auto toolkit = std::make_shared<IniFile>(widePath);
    Operation("IniLoad/Toolkit", [widePath] { benchmark::DoNotOptimize(IniFile(widePath).IsLoaded()); });
    Operation("IniLookUp/Toolkit",
              RandomLookUp<TString<wchar_t>>(
                  [](const std::string& text) { return UTF8::ToUNICODE(TString<char>(text)); },
                  [toolkit](const auto& section, const auto& key) {
                      benchmark::DoNotOptimize(
                          toolkit->GetValue(section, key, TString<wchar_t>::Empty()).data());
                  }));
    const auto settings = std::make_shared<Settings>(*Settings::Load(path));
    Operation("SettingsLoad/Toolkit", [path] { benchmark::DoNotOptimize(Settings::Load(path).has_value()); });
    Operation("SettingsLookUp/Toolkit",
              RandomLookUp<std::string>(
                  &Narrow, [settings](const std::string& section, const std::string& key)
                  { benchmark::DoNotOptimize(settings->Get(section, key, std::string_view()).data()); }));
    // Its lines alone, without what they say.
    Operation("IniLoad/limit",
              [name = wxString(widePath)]
              {
                  wxTextFile file;
                  file.Open(name, wxConvUTF8);
                  for (wxString line = file.GetFirstLine(); !file.Eof(); line = file.GetNextLine())
                      benchmark::DoNotOptimize(line);
              });
    Operation("IniLoad/wx",
              [name = wxString(widePath)]
              {
                  const wxFileConfig file(wxEmptyString, wxEmptyString, name, wxEmptyString,
                                          wxCONFIG_USE_LOCAL_FILE);
                  benchmark::DoNotOptimize(file.HasGroup("section0"));
              });
    const auto wx = std::make_shared<wxFileConfig>(wxEmptyString, wxEmptyString, wxString(widePath),
                                                   wxEmptyString, wxCONFIG_USE_LOCAL_FILE);
    Operation("IniLookUp/wx",
              RandomLookUp<wxString>([](const std::string& text) { return wxString(text); },
                                     [wx](const wxString& section, const wxString& key)
                                     { benchmark::DoNotOptimize(wx->Read("/" + section + "/" + key)); }));
#ifdef BENCH_GLIB
    const auto loadGlib = [path]
    {
        GKeyFile* const file = g_key_file_new();
        g_key_file_load_from_file(file, path.c_str(), G_KEY_FILE_NONE, nullptr);
        return std::shared_ptr<GKeyFile>(file, &g_key_file_free);
    };
    Operation("IniLoad/GLib", [loadGlib] { benchmark::DoNotOptimize(loadGlib()); });
    Operation("IniLookUp/GLib",
              RandomLookUp<std::string>(
                  &Narrow, [file = loadGlib()](const std::string& section, const std::string& key)
                  { g_free(g_key_file_get_value(file.get(), section.c_str(), key.c_str(), nullptr)); }));
#endif
#ifdef BENCH_SIMPLEINI
    const auto loadSimple = [path]
    {
        const auto file = std::make_shared<CSimpleIniA>(true, false, false);
        file->LoadFile(path.c_str());
        return file;
    };
    Operation("IniLoad/SimpleIni", [loadSimple] { benchmark::DoNotOptimize(loadSimple()); });
    Operation("IniLookUp/SimpleIni",
              RandomLookUp<std::string>(
                  &Narrow, [file = loadSimple()](const std::string& section, const std::string& key)
                  { benchmark::DoNotOptimize(file->GetValue(section.c_str(), key.c_str())); }));
#endif
#ifdef BENCH_INIH
    Operation("IniLoad/inih",
              [path]
              {
                  std::map<std::string, std::string> values;
                  ini_parse(
                      path.c_str(),
                      [](void* to, const char* section, const char* key, const char* value)
                      {
                          (*static_cast<std::map<std::string, std::string>*>(
                              to))[std::string(section) + "/" + key] = value;
                          return 1;
                      },
                      &values);
                  benchmark::DoNotOptimize(values.size());
              });
#endif
#ifdef BENCH_INIREADER
    Operation("IniLookUp/inih",
              RandomLookUp<std::string>(
                  &Narrow, [file = std::make_shared<INIReader>(path.string())](const std::string& section,
                                                                               const std::string& key)
                  { benchmark::DoNotOptimize(file->Get(section, key, std::string()).data()); }));
#endif
#ifdef BENCH_QT
    const QString qtPath = QString::fromStdString(path.string());
    // It keeps the files that it read last, so that one of so many is read anew; and it reads a section when
    // it is asked for one of its keys.
    Operation("IniLoad/Qt",
              [paths = CopiesOf(path), sections = SectionNames(), next = std::size_t{0}]() mutable
              {
                  const QSettings file(QString::fromStdString(paths[++next % paths.size()].string()),
                                       QSettings::IniFormat);
                  for (const QString& section : sections)
                      benchmark::DoNotOptimize(file.contains(section + "/key0"));
              });
    const auto qt = std::make_shared<QSettings>(qtPath, QSettings::IniFormat);
    Operation("IniLookUp/Qt",
              RandomLookUp<QString>(
                  [](const std::string& text) { return QString::fromStdString(text); },
                  [qt](const QString& section, const QString& key)
                  { benchmark::DoNotOptimize(qt->value(section + '/' + key).toString().size()); }));
#endif
#ifdef BENCH_POCO
    Operation("IniLoad/POCO",
              [path]
              {
                  const Poco::AutoPtr<Poco::Util::IniFileConfiguration> file(
                      new Poco::Util::IniFileConfiguration(path.string()));
                  benchmark::DoNotOptimize(file.get());
              });
    const Poco::AutoPtr<Poco::Util::IniFileConfiguration> poco(
        new Poco::Util::IniFileConfiguration(path.string()));
    Operation("IniLookUp/POCO",
              RandomLookUp<std::string>(
                  &Narrow, [poco](const std::string& section, const std::string& key)
                  { benchmark::DoNotOptimize(poco->getString(section + "." + key).size()); }));
#endif
}
