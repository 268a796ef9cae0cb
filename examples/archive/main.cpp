// SPDX-License-Identifier: MIT
// Writes a ZIP archive, lists it, and extracts it below a folder: archive <archive> <folder>

#include <iostream>

#include <toolkit/files/ZipReader.h>
#include <toolkit/files/ZipWriter.h>

using namespace Toolkit;

static Result<void> WriteTo(const char* archive)
{
    Result<ZipWriter> out = ZipWriter::Create(archive);
    if (!out)
        return out.error();
    for (const char* name : {"inbox/a.txt", "inbox/b.txt"})
        if (Result<void> added = out->Add(name, std::string("the content of ") + name); !added)
            return added;
    // Until then there is no archive.
    return out->Finish();
}

int main(int argc, char** argv)
{
    const Result<void> written =
        argc == 3 ? WriteTo(argv[1]) : Failure(Errc::Refused, "usage: archive <archive> <folder>");
    const Result<ZipReader> zip = written ? ZipReader::Open(argv[1]) : written.error();
    const Result<ZipReport> report = zip ? zip->ExtractAll(argv[2]) : zip.error();
    if (!report)
    {
        std::cerr << report.error().Message() << '\n';
        return 1;
    }
    for (const ZipEntry& entry : *zip)
        std::cout << entry.Name() << ", " << entry.Size() << " bytes\n";
    std::cout << report->Extracted().size() << " extracted\n";
    for (const Failure& refused : report->Refused())
        std::cerr << refused.Message() << '\n';
}
