// SPDX-License-Identifier: MIT
#include "bench/growth/Growth.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>

#include "toolkit/encoding/Bytes.h"
#include "toolkit/files/Directory.h"
#include "toolkit/files/FFile.h"
#include "toolkit/files/FSStream.h"
#include "toolkit/files/TextFile.h"

namespace ToolkitGrowth
{

using namespace Toolkit;

namespace
{

const std::vector<long> s_vecMost = {1000, 4000, 16000, 64000};

void AddNumbers()
{
    Add("SerializedNumbersWrite", s_vecFew,
        [](std::size_t size)
        {
            return [size, path = PathOf("numbers-written")]
            {
                FSStream stream(path, FSStream::ModeWrite);
                for (std::size_t i = 0; i < size; ++i)
                    stream.Write(static_cast<unsigned int>(i));
            };
        });
    Add("SerializedNumbersRead", s_vecFew,
        [](std::size_t size)
        {
            const TString<wchar_t> path = PathOf("numbers" + std::to_string(size));
            FSStream stream(path, FSStream::ModeWrite);
            for (std::size_t i = 0; i < size; ++i)
                stream.Write(static_cast<unsigned int>(i));
            return [size, path]
            {
                FSStream reader(path, FSStream::ModeRead);
                unsigned int value = 0;
                for (std::size_t i = 0; i < size; ++i)
                    benchmark::DoNotOptimize(reader.Read(value));
            };
        });
}

// A text or a buffer of that size, written and read back.
template <class Write, class Read>
void AddTransfer(const std::string& operation, Write write, Read read)
{
    Add(operation + "Write", s_vecMany,
        [write](std::size_t size)
        {
            return [item = write(size), path = PathOf("item-written")]
            {
                FSStream stream(path, FSStream::ModeWrite);
                item(stream);
            };
        });
    Add(operation + "Read", s_vecMany,
        [operation, write, read](std::size_t size)
        {
            const TString<wchar_t> path = PathOf(operation + std::to_string(size));
            FSStream stream(path, FSStream::ModeWrite);
            write(size)(stream);
            return [path, read]
            {
                FSStream reader(path, FSStream::ModeRead);
                read(reader);
            };
        });
}

void AddSerialized()
{
    AddNumbers();
    AddTransfer(
        "SerializedText",
        [](std::size_t size) {
            return [text = WideText(size)](IStream& stream) { benchmark::DoNotOptimize(stream.Write(text)); };
        },
        [](IStream& stream)
        {
            TString<wchar_t> text;
            benchmark::DoNotOptimize(stream.Read(text));
        });
    AddTransfer(
        "SerializedBytes",
        [](std::size_t size)
        {
            return [text = ToolkitBench::Words(size)](IStream& stream)
            {
                const Bytes bytes(reinterpret_cast<const unsigned char*>(text.data()),
                                  static_cast<unsigned int>(text.size()));
                benchmark::DoNotOptimize(bytes.Serialize(stream));
            };
        },
        [](IStream& stream)
        {
            Bytes bytes;
            benchmark::DoNotOptimize(bytes.Deserialize(stream));
        });
}

// A file of that many lines.
TString<wchar_t> PathOfLines(std::size_t lines)
{
    const std::string name = "lines" + std::to_string(lines);
    std::ofstream file(ToolkitBench::Folder() / name);
    for (std::size_t i = 0; i < lines; ++i)
        file << "line " << 1000000 + i << " of a text that somebody wrote\n";
    return PathOf(name);
}

std::shared_ptr<TextFile> LoadedLines(std::size_t lines)
{
    const auto file = std::make_shared<TextFile>();
    file->Open(PathOfLines(lines));
    return file;
}

void AddTextFile()
{
    Add("TextFileLoad", s_vecMost,
        [](std::size_t lines)
        {
            return [path = PathOfLines(lines)]
            {
                TextFile file;
                benchmark::DoNotOptimize(file.Open(path));
            };
        });
    Add("TextFileLoadOneLine", s_vecMany,
        [](std::size_t length)
        {
            const std::string name = "line" + std::to_string(length);
            std::ofstream(ToolkitBench::Folder() / name) << ToolkitBench::Words(length);
            return [path = PathOf(name)]
            {
                TextFile file;
                benchmark::DoNotOptimize(file.Open(path));
            };
        });
    Add("TextFileWalk", s_vecMost,
        [](std::size_t lines)
        {
            return [file = LoadedLines(lines)]
            {
                for (TString<wchar_t> line = file->GetFirstLine(); !file->Eof(); line = file->GetNextLine())
                    benchmark::DoNotOptimize(line.data());
            };
        });
    Add("TextFileAddLines", s_vecMost,
        [](std::size_t lines)
        {
            return [lines, line = TString<wchar_t>(L"a line of a text that somebody wrote")]
            {
                TextFile file;
                for (std::size_t i = 0; i < lines; ++i)
                    file.AddLine(line);
            };
        });
    Add("TextFileWrite", s_vecMost,
        [](std::size_t lines)
        { return [file = LoadedLines(lines)] { benchmark::DoNotOptimize(file->Write()); }; });
}

void AddFFile()
{
    Add("FFileWrite", s_vecMany,
        [](std::size_t length)
        {
            return [text = WideText(length), path = PathOf("written")]
            {
                FFile file;
                file.Open(path, L"wb");
                file.Write(text);
            };
        });
    Add("FFileRead", s_vecMany,
        [](std::size_t length)
        {
            const std::string name = "read" + std::to_string(length);
            std::ofstream(ToolkitBench::Folder() / name) << ToolkitBench::Words(length);
            return [path = PathOf(name), length]
            {
                std::vector<char> bytes(length);
                FFile file;
                file.Open(path, L"rb");
                benchmark::DoNotOptimize(file.Read(bytes.data(), static_cast<unsigned int>(length)));
            };
        });
}

std::filesystem::path FolderOf(const std::string& kind, std::size_t entries)
{
    std::filesystem::path folder = ToolkitBench::Folder() / (kind + std::to_string(entries));
    if (!std::filesystem::create_directory(folder))
        return folder;
    for (std::size_t i = 0; i < entries; ++i)
    {
        const std::filesystem::path path = folder / ("name" + std::to_string(1000000 + i) + ".txt");
        if (kind == "folders")
            std::filesystem::create_directory(path);
        else
            std::ofstream file(path);
    }
    return folder;
}

template <class List>
void AddListing(const std::string& operation, const std::string& kind, List list)
{
    Add(operation, s_vecFew,
        [kind, list](std::size_t entries)
        {
            return [list, path = UTF8::ToUNICODE(TString<char>(FolderOf(kind, entries).string()))]
            {
                std::vector<TString<wchar_t>> names;
                list(path, names);
                benchmark::DoNotOptimize(names.data());
            };
        });
}

void AddDirectory()
{
    using Names = std::vector<TString<wchar_t>>;
    AddListing("ListFiles", "files",
               [](const TString<wchar_t>& path, Names& names) { Directory(path).GetFiles(L"*.txt", names); });
    AddListing("ListFolders", "folders",
               [](const TString<wchar_t>& path, Names& names)
               { Directory(path).GetDirectories(L"*.txt", names); });
    AddListing("ListAll", "files",
               [](const TString<wchar_t>& path, Names& names)
               { Directory::EnumFilePaths(names, path, L"*"); });
    // A filter that nearly fits a name, with ever more stars.
    Add("ListFilter", {4, 16, 64, 120},
        [](std::size_t stars)
        {
            const std::filesystem::path folder = ToolkitBench::Folder() / "filtered";
            std::filesystem::create_directory(folder);
            std::ofstream file(folder / std::string(250, 'a'));
            std::wstring filter;
            for (std::size_t i = 0; i < stars; ++i)
                filter += L"*a";
            return [path = UTF8::ToUNICODE(TString<char>(folder.string())),
                    filter = TString<wchar_t>(filter + L"b")]
            {
                Names names;
                Directory(path).GetFiles(filter, names);
                benchmark::DoNotOptimize(names.data());
            };
        });
    Add("CreateFolders", {12, 50, 200, 800},
        [](std::size_t depth)
        {
            const std::filesystem::path folder = ToolkitBench::Folder() / ("deep" + std::to_string(depth));
            const auto next = std::make_shared<std::size_t>(0);
            std::filesystem::create_directory(folder);
            std::wstring below;
            for (std::size_t i = 0; i < depth; ++i)
                below += L"/d";
            return [folder = UTF8::ToUNICODE(TString<char>(folder.string())), below, next]
            {
                const TString<wchar_t> path(folder + L"/" + std::to_wstring(1000000 + ++*next) + below);
                benchmark::DoNotOptimize(Directory::Create(path));
            };
        });
}

} // namespace

void AddFiles()
{
    AddSerialized();
    AddTextFile();
    AddFFile();
    AddDirectory();
}

} // namespace ToolkitGrowth
