// SPDX-License-Identifier: MIT
#include <filesystem>
#include <iomanip>
#include <sstream>

#include <wx/arrstr.h>
#include <wx/cmdline.h>
#include <wx/filename.h>

#include "bench/Bench.h"
#include "toolkit/app/CmdLineParser.h"
#include "toolkit/app/PathManager.h"

#ifdef BENCH_QT
#include <QDir>
#include <QProcess>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_BOOST
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#endif
#ifdef BENCH_BOOST_FILESYSTEM
#include <boost/filesystem/path.hpp>
#endif

using namespace Toolkit;

namespace
{
const char s_strLine[] =
    "-open \"a file with blanks.txt\" -level 3 -quiet \"\" another.txt -culture en_US last";
const wchar_t s_strWideLine[] =
    L"-open \"a file with blanks.txt\" -level 3 -quiet \"\" another.txt -culture en_US last";
} // namespace

void ToolkitBench::Register()
{
    Operation("Tokenize/Toolkit",
              [line = TString<wchar_t>(s_strWideLine)]
              {
                  std::vector<TString<wchar_t>> tokens;
                  CmdLineParser::Tokenize(line, tokens);
                  benchmark::DoNotOptimize(tokens.data());
              });
    Operation("Tokenize/wx",
              [line = wxString(s_strLine)] {
                  benchmark::DoNotOptimize(
                      wxCmdLineParser::ConvertStringToArgs(line, wxCMD_LINE_SPLIT_UNIX).size());
              });
    Operation("Tokenize/std",
              [line = std::wstring(s_strWideLine)]
              {
                  std::vector<std::wstring> tokens;
                  std::wistringstream in(line);
                  for (std::wstring token; in >> std::quoted(token);)
                      tokens.push_back(token);
                  benchmark::DoNotOptimize(tokens.data());
              });
    Operation("AppendPath/Toolkit",
              [base = TString<wchar_t>(L"/home/somebody/.application"), name = TString<wchar_t>(L"plugins")]
              {
                  TString<wchar_t> path;
                  PathManager::AppendPath(path, base, name);
                  benchmark::DoNotOptimize(path.data());
              });
    Operation("AppendPath/std",
              [base = std::filesystem::path("/home/somebody/.application"),
               name = std::filesystem::path("plugins")] { benchmark::DoNotOptimize((base / name).c_str()); });
    Operation("AppendPath/wx", [base = wxString("/home/somebody/.application"), name = wxString("plugins")]
              { benchmark::DoNotOptimize(wxFileName(base, name).GetFullPath()); });
#ifdef BENCH_QT
    Operation("Tokenize/Qt",
              [line = QString(s_strLine)] { benchmark::DoNotOptimize(QProcess::splitCommand(line).size()); });
    Operation("AppendPath/Qt", [base = QDir("/home/somebody/.application"), name = QString("plugins")]
              { benchmark::DoNotOptimize(base.filePath(name).size()); });
#endif
#ifdef BENCH_GLIB
    Operation("Tokenize/GLib",
              []
              {
                  gint count = 0;
                  gchar** vector = nullptr;
                  g_shell_parse_argv(s_strLine, &count, &vector, nullptr);
                  g_strfreev(vector);
              });
    Operation("AppendPath/GLib",
              [] { g_free(g_build_filename("/home/somebody/.application", "plugins", nullptr)); });
#endif
#ifdef BENCH_BOOST
    // Splits only; it knows no quotation marks.
    Operation("Tokenize/Boost",
              [line = std::wstring(s_strWideLine)]
              {
                  std::vector<std::wstring> tokens;
                  boost::split(tokens, line, boost::is_any_of(L" \t"), boost::token_compress_on);
                  benchmark::DoNotOptimize(tokens.data());
              });
#endif
#ifdef BENCH_BOOST_FILESYSTEM
    Operation("AppendPath/Boost", [base = boost::filesystem::path("/home/somebody/.application"),
                                   name = boost::filesystem::path("plugins")]
              { benchmark::DoNotOptimize((base / name).c_str()); });
#endif
}
