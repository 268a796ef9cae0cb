// SPDX-License-Identifier: MIT
#include <cstdio>
#include <fstream>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/dir.h>
#include <wx/textfile.h>

#include "bench/Bench.h"
#include "toolkit/Toolkit.h"
#include "toolkit/files/WholeFile.h"

#ifdef BENCH_QT
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QTextStream>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_POCO
#include <Poco/BinaryReader.h>
#include <Poco/BinaryWriter.h>
#include <Poco/FileStream.h>
#include <Poco/UnicodeConverter.h>
#endif

using namespace Toolkit;

namespace
{

std::wstring Wide(const std::filesystem::path& path)
{
    return UTF8::ToUNICODE(TString<char>(path.string()));
}

const unsigned int s_uNumbers = 1000;

void RegisterSerialized()
{
    const std::filesystem::path path = ToolkitBench::Folder() / "serialized";
    ToolkitBench::Operation("SerializedWrite/Toolkit",
                            [path = TString<wchar_t>(Wide(path))]
                            {
                                FSStream stream(path, FSStream::ModeWrite);
                                for (unsigned int i = 0; i < s_uNumbers; ++i)
                                    stream.Write(i);
                            });
    ToolkitBench::Operation("SerializedWrite/limit",
                            [path]
                            {
                                const int file =
                                    open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
                                for (unsigned int i = 0; i < s_uNumbers; ++i)
                                    benchmark::DoNotOptimize(write(file, &i, sizeof i));
                                close(file);
                            });
    const std::filesystem::path readPath = ToolkitBench::Folder() / "serialized-read";
    {
        FSStream stream(Wide(readPath), FSStream::ModeWrite);
        for (unsigned int i = 0; i < s_uNumbers; ++i)
            stream.Write(i);
    }
    ToolkitBench::Operation("SerializedRead/Toolkit",
                            [path = TString<wchar_t>(Wide(readPath))]
                            {
                                FSStream stream(path, FSStream::ModeRead);
                                unsigned int value = 0;
                                for (unsigned int i = 0; i < s_uNumbers; ++i)
                                    benchmark::DoNotOptimize(stream.Read(value));
                            });
    ToolkitBench::Operation("SerializedRead/limit",
                            [path = readPath]
                            {
                                const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
                                unsigned int value = 0;
                                for (unsigned int i = 0; i < s_uNumbers; ++i)
                                    benchmark::DoNotOptimize(read(file, &value, sizeof value));
                                close(file);
                            });
#ifdef BENCH_QT
    ToolkitBench::Operation("SerializedWrite/Qt",
                            [name = QString::fromStdString(path.string())]
                            {
                                QFile file(name);
                                file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
                                QDataStream stream(&file);
                                for (unsigned int i = 0; i < s_uNumbers; ++i)
                                    stream << i;
                            });
    ToolkitBench::Operation("SerializedRead/Qt",
                            [name = QString::fromStdString(readPath.string())]
                            {
                                QFile file(name);
                                file.open(QIODevice::ReadOnly);
                                QDataStream stream(&file);
                                unsigned int value = 0;
                                for (unsigned int i = 0; i < s_uNumbers; ++i)
                                    stream >> value;
                                benchmark::DoNotOptimize(value);
                            });
#endif
#ifdef BENCH_POCO
    ToolkitBench::Operation("SerializedWrite/POCO",
                            [path]
                            {
                                Poco::FileOutputStream file(path.string());
                                Poco::BinaryWriter writer(file);
                                // Each number reaches the system before the next one, as everywhere here.
                                for (unsigned int i = 0; i < s_uNumbers; ++i)
                                {
                                    writer << i;
                                    writer.flush();
                                }
                            });
    ToolkitBench::Operation("SerializedRead/POCO",
                            [path = readPath]
                            {
                                Poco::FileInputStream file(path.string());
                                Poco::BinaryReader reader(file);
                                unsigned int value = 0;
                                for (unsigned int i = 0; i < s_uNumbers; ++i)
                                    reader >> value;
                                benchmark::DoNotOptimize(value);
                            });
#endif
}

void WriteLines(const std::filesystem::path& path, std::size_t lines)
{
    std::ofstream file(path);
    for (std::size_t i = 0; i < lines; ++i)
        file << "line " << i << " of a text that somebody wrote\n";
}

void RegisterTextFile()
{
    const std::filesystem::path path = ToolkitBench::Folder() / "lines.txt";
    WriteLines(path, 10000);
    ToolkitBench::Operation("TextFileLoad/Toolkit",
                            [path = TString<wchar_t>(Wide(path))]
                            {
                                TextFile file;
                                file.Open(path);
                                for (TString<wchar_t> line = file.GetFirstLine(); !file.Eof();
                                     line = file.GetNextLine())
                                    benchmark::DoNotOptimize(line.data());
                            });
    ToolkitBench::Operation("TextFileLoad/limit",
                            [name = wxString(Wide(path))]
                            {
                                wxTextFile file;
                                file.Open(name, wxConvUTF8);
                                for (wxString line = file.GetFirstLine(); !file.Eof();
                                     line = file.GetNextLine())
                                    benchmark::DoNotOptimize(line);
                            });
#ifdef BENCH_QT
    ToolkitBench::Operation("TextFileLoad/Qt",
                            [name = QString::fromStdString(path.string())]
                            {
                                QFile file(name);
                                file.open(QIODevice::ReadOnly);
                                QTextStream stream(&file);
                                stream.setCodec("UTF-8");
                                QString line;
                                while (stream.readLineInto(&line))
                                    benchmark::DoNotOptimize(line);
                            });
#endif
#ifdef BENCH_GLIB
    ToolkitBench::Operation(
        "TextFileLoad/GLib",
        [path]
        {
            GIOChannel* const channel = g_io_channel_new_file(path.c_str(), "r", nullptr);
            gchar* line = nullptr;
            gsize length = 0;
            while (g_io_channel_read_line(channel, &line, &length, nullptr, nullptr) == G_IO_STATUS_NORMAL)
            {
                g_free(g_utf8_to_ucs4(line, static_cast<glong>(length), nullptr, nullptr, nullptr));
                g_free(line);
            }
            g_io_channel_unref(channel);
        });
#endif
#ifdef BENCH_POCO
    ToolkitBench::Operation("TextFileLoad/POCO",
                            [path]
                            {
                                Poco::FileInputStream file(path.string());
                                std::string line;
                                Poco::UTF32String wide;
                                while (std::getline(file, line))
                                {
                                    Poco::UnicodeConverter::convert(line, wide);
                                    benchmark::DoNotOptimize(wide.data());
                                }
                            });
#endif
}

// What a program does that reads a file into a text without the library.
std::string ReadAll(const char* path)
{
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    fstat(file, &status);
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    benchmark::DoNotOptimize(read(file, text.data(), text.size()));
    close(file);
    return text;
}

// Beside it, and in its place once it is on the disk.
void ReplaceAll(const std::filesystem::path& path, const std::string& text)
{
    const std::string other = path.string() + ".new";
    const int file = open(other.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    benchmark::DoNotOptimize(write(file, text.data(), text.size()));
    fsync(file);
    close(file);
    benchmark::DoNotOptimize(rename(other.c_str(), path.c_str()));
    const int folder = open(path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    fsync(folder);
    close(folder);
}

void RegisterWholeFile(const std::string& name, std::size_t size)
{
    const std::filesystem::path folder = ToolkitBench::Folder() / ("whole" + name);
    std::filesystem::create_directories(folder);
    const std::filesystem::path path = folder / "file";
    const std::string text = ToolkitBench::Words(size);
    ReplaceAll(path, text);
    ToolkitBench::Operation("ReadFile" + name + "/Toolkit",
                            [path] { benchmark::DoNotOptimize(ReadFile(path)->data()); });
    ToolkitBench::Operation("ReadFile" + name + "/limit",
                            [path] { benchmark::DoNotOptimize(ReadAll(path.c_str()).data()); });
    ToolkitBench::WholeOperation("WriteFile" + name + "/Toolkit",
                                 [path, text] { benchmark::DoNotOptimize(WriteFile(path, text)); });
    ToolkitBench::WholeOperation("WriteFile" + name + "/limit", [path, text] { ReplaceAll(path, text); });
}

void RegisterListing()
{
    const std::filesystem::path folder = ToolkitBench::Folder() / "listing";
    std::filesystem::create_directories(folder);
    for (int i = 0; i < 1000; ++i)
        std::ofstream(folder / ("file" + std::to_string(i) + ".txt"));
    ToolkitBench::Operation("Listing/Toolkit",
                            [directory = Directory(Wide(folder)), filter = TString<wchar_t>(L"*.txt")]
                            {
                                std::vector<TString<wchar_t>> names;
                                directory.GetFiles(filter, names);
                                benchmark::DoNotOptimize(names.data());
                            });
    ToolkitBench::Operation("Listing/wx",
                            [name = wxString(Wide(folder))]
                            {
                                std::vector<wxString> names;
                                const wxDir directory(name);
                                wxString file;
                                for (bool found =
                                         directory.GetFirst(&file, "*.txt", wxDIR_FILES | wxDIR_HIDDEN);
                                     found; found = directory.GetNext(&file))
                                    names.push_back(file);
                                benchmark::DoNotOptimize(names.data());
                            });
    ToolkitBench::Operation("Listing/limit",
                            [folder]
                            {
                                DIR* const directory = opendir(folder.c_str());
                                while (const dirent* entry = readdir(directory))
                                    benchmark::DoNotOptimize(+entry->d_name);
                                closedir(directory);
                            });
    ToolkitBench::Operation("Listing/std",
                            [folder]
                            {
                                std::vector<std::string> names;
                                for (const auto& entry : std::filesystem::directory_iterator(folder))
                                    if (entry.path().extension() == ".txt" && !entry.is_directory())
                                        names.push_back(entry.path().filename());
                                benchmark::DoNotOptimize(names.data());
                            });
#ifdef BENCH_QT
    ToolkitBench::Operation(
        "Listing/Qt",
        [name = QString::fromStdString(folder.string())]
        {
            benchmark::DoNotOptimize(
                QDir(name).entryList({"*.txt"}, QDir::Files | QDir::Hidden, QDir::Unsorted).size());
        });
#endif
#ifdef BENCH_GLIB
    ToolkitBench::Operation("Listing/GLib",
                            [folder]
                            {
                                GDir* const directory = g_dir_open(folder.c_str(), 0, nullptr);
                                std::vector<std::string> names;
                                // It does not tell folders from files while it reads.
                                while (const char* name = g_dir_read_name(directory))
                                    if (g_pattern_match_simple("*.txt", name) &&
                                        !g_file_test((folder / name).c_str(), G_FILE_TEST_IS_DIR))
                                        names.push_back(name);
                                g_dir_close(directory);
                                benchmark::DoNotOptimize(names.data());
                            });
#endif
}

} // namespace

void ToolkitBench::Register()
{
    RegisterSerialized();
    RegisterTextFile();
    RegisterWholeFile("4K", 4096);
    RegisterWholeFile("1M", 1048576);
    RegisterListing();
}
