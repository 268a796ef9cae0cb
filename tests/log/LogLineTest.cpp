// SPDX-License-Identifier: MIT
#include "toolkit/log/LogLine.h"

#include <regex>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>

#include "tests/support/InstalledLogger.h"
#include "toolkit/app/GetTickCount.h"
#include "toolkit/encoding/UTF8.h"

using namespace Toolkit;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using ToolkitTest::InstalledLogger;
using ToolkitTest::Record;
using ToolkitTest::RecordingLogger;

namespace
{

// The fields of a line, without its line feed.
std::vector<std::wstring> FieldsOf(const std::wstring& line)
{
    std::wsmatch match;
    if (!std::regex_match(line, match,
                          std::wregex(L"(\\d+) (\\d+) : (\\d+) : (\\w+|operator\\(\\)) : (.*)\n")))
        return {};
    return std::vector<std::wstring>(match.begin() + 1, match.end());
}

void ExpectLine(LogSeverity severity, int line, const std::wstring& function, const std::wstring& message,
                const std::wstring& written)
{
    const std::vector<std::wstring> fields = FieldsOf(written);
    ASSERT_EQ(5U, fields.size()) << testing::PrintToString(written);
    EXPECT_EQ(std::to_wstring(severity), fields[0]);
    EXPECT_LE(std::stoul(fields[1]), GetTickCount());
    EXPECT_EQ(std::to_wstring(line), fields[2]);
    EXPECT_EQ(function, fields[3]);
    EXPECT_EQ(message, fields[4]);
}

class LogLineTest : public testing::Test
{
protected:
    LogLineTest() : m_installed(new RecordingLogger(m_record, LogSeverity::Info)) {}

    Record m_record;
    const InstalledLogger m_installed;
};

} // namespace

TEST_F(LogLineTest, FunctionWithoutANameIsEmpty)
{
    {
        LogLine line(LogSeverity::Info, 7, nullptr);
        line << L"message";
    }
    EXPECT_NE(std::wstring::npos, m_record.Text().find(L" : 7 :  : message\n")) << m_record.Text();
}

TEST(LogLine, WithoutALoggerIsLost)
{
    {
        LogLine line(LogSeverity::Info, 7, "Function");
        line << L"message";
    }
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
}

TEST_F(LogLineTest, LibraryLineIsStreamedPieceByPiece)
{
    const unsigned int before = GetTickCount();
    LogLine::Stream(LogSeverity::Info, 42, "Function", L">>> Function()");
    const std::vector<std::wstring> pieces = m_record.Pieces();
    ASSERT_THAT(pieces, SizeIs(10));
    EXPECT_GE(std::stoul(pieces[2]), before);
    EXPECT_LE(std::stoul(pieces[2]), GetTickCount());
    EXPECT_THAT(pieces, ElementsAre(L"2", L" ", pieces[2], L" : ", L"42", L" : ", L"Function", L" : ",
                                    L">>> Function()", L"\n"));
}

TEST_F(LogLineTest, LibraryLineSelectsItsSeverityAlsoWhenItIsDropped)
{
    LogLine::Stream(LogSeverity::Debug, 42, "Function", L"message");
    EXPECT_THAT(m_record.Pieces(), IsEmpty());
    EXPECT_EQ(LogSeverity::Debug, (*ILogger::s_pInstance)->GetSeverity());
}

TEST(LogLine, LibraryLineWithoutALoggerIsLost)
{
    LogLine::Stream(LogSeverity::Error, 42, "Function", L"message");
    EXPECT_EQ(nullptr, ILogger::s_pInstance);
}

TEST_F(LogLineTest, HostLineIsOneWrite)
{
    const int line = __LINE__ + 1;
    TOOLKIT_LOG(LogSeverity::Warning) << "opened " << TString<wchar_t>(L"caf\u00E9") << ' ' << 12345 << true;
    ASSERT_THAT(m_record.Pieces(), SizeIs(1));
    ExpectLine(LogSeverity::Warning, line, L"TestBody", L"opened caf\u00E9 123451", m_record.Text());
}

TEST_F(LogLineTest, HostLineReplacesWhatNoFileCouldHold)
{
    const std::wstring text = {
        L'a', L'\0',         static_cast<wchar_t>(0xD800),  static_cast<wchar_t>(0xDFFF),
        L'b', L'\U0010FFFF', static_cast<wchar_t>(0x110000)};
    TOOLKIT_LOG(LogSeverity::Info) << text << "\xFF" << 'c';
    EXPECT_EQ(L"a\uFFFD\uFFFD\uFFFDb\U0010FFFF\uFFFD\uFFFDc", FieldsOf(m_record.Text()).at(4));
}

TEST_F(LogLineTest, HostLineKeepsEveryCharacterAndReplacesTheOthers)
{
    for (const std::uint32_t value :
         {1U,        9U,          0x7FU,       0x80U,       0xD7FEU,     0xD7FFU,    0xD800U,
          0xDBFFU,   0xDFFFU,     0xE000U,     0xFFFDU,     0xFFFFU,     0x10000U,   0x10FFFFU,
          0x110000U, 0x7FFFFFFFU, 0x80000000U, 0x80000001U, 0x8000D800U, 0xFFFFFFFEU})
    {
        const bool kept = value < 0xD800 || (value > 0xDFFF && value <= 0x10FFFF);
        for (std::size_t place = 0; place < 40; ++place)
        {
            std::wstring message(40, L'm');
            message[place] = static_cast<wchar_t>(value);
            m_record.Clear();
            LogLine(LogSeverity::Info, 42, "f") << message;
            if (!kept)
                message[place] = L'\uFFFD';
            const std::wstring line = m_record.Text();
            EXPECT_EQ(message + L"\n", line.substr(line.size() - 41)) << value << " at " << place;
        }
    }
}

TEST_F(LogLineTest, HostLineHoldsAFunctionsNameOfAnyLength)
{
    std::size_t lines = 0;
    for (const std::size_t length : {0U, 1U, 63U, 64U, 65U, 5000U})
        for (const char* last : {"", "\xC3\xA9", "\xE2\x82\xAC"})
        {
            const TString<char> name(std::string(length, 'f') + last);
            LogLine(LogSeverity::Info, 4294967295U, name.c_str()) << "message";
            ASSERT_THAT(m_record.Pieces(), SizeIs(++lines));
            const std::wstring line = m_record.Pieces().back();
            EXPECT_EQ(L" : 4294967295 : " + UTF8::ToUNICODE(name) + L" : message\n",
                      line.substr(line.find(L" : ")));
        }
}

TEST_F(LogLineTest, HostLineWithoutAFunctionsNameOrWithBrokenOneIsWrittenWithoutIt)
{
    for (const char* name : {static_cast<const char*>(nullptr), "broken \xFF"})
        LogLine(LogSeverity::Info, 42, name) << "message";
    for (const std::wstring& line : m_record.Pieces())
        EXPECT_EQ(L" : 42 :  : message\n", line.substr(line.find(L" : ")));
    EXPECT_THAT(m_record.Pieces(), SizeIs(2));
}

TEST_F(LogLineTest, HostLineLosesNothingButTheBrokenBytes)
{
    TOOLKIT_LOG(LogSeverity::Info) << std::string("a\xff"
                                                  "b")
                                   << std::string("ok") << TString<char>("\xE2\x82")
                                   << std::string("\xC3\xA9\0c", 4);
    EXPECT_EQ(L"a\uFFFDbok\uFFFD\uFFFD\u00E9\uFFFDc", FieldsOf(m_record.Text()).at(4));
}

TEST_F(LogLineTest, HostLineWithoutAMessageIsWholeToo)
{
    TOOLKIT_LOG(LogSeverity::Info);
    ASSERT_THAT(m_record.Pieces(), SizeIs(1));
    ExpectLine(LogSeverity::Info, __LINE__ - 2, L"TestBody", L"", m_record.Text());
}

TEST_F(LogLineTest, HostLineLeavesTheSelectedSeverityAlone)
{
    **ILogger::s_pInstance << SetSeverity(LogSeverity::Error);
    TOOLKIT_LOG(LogSeverity::Info) << "x";
    EXPECT_EQ(LogSeverity::Error, (*ILogger::s_pInstance)->GetSeverity());
}

TEST_F(LogLineTest, DroppedHostLineEvaluatesNothing)
{
    int evaluated = 0;
    TOOLKIT_LOG(LogSeverity::Debug) << ++evaluated;
    EXPECT_EQ(0, evaluated);
    EXPECT_THAT(m_record.Pieces(), IsEmpty());
}

TEST(LogLine, HostLineWithoutALoggerEvaluatesNothing)
{
    int evaluated = 0;
    TOOLKIT_LOG(LogSeverity::Error) << ++evaluated;
    EXPECT_EQ(0, evaluated);
}

TEST_F(LogLineTest, SeverityIsEvaluatedOnce)
{
    int evaluated = 0;
    const auto severity = [&evaluated](LogSeverity answer)
    {
        ++evaluated;
        return answer;
    };
    TOOLKIT_LOG(severity(LogSeverity::Info)) << "kept";
    EXPECT_EQ(1, evaluated);
    TOOLKIT_LOG(severity(LogSeverity::Verbose)) << "dropped";
    EXPECT_EQ(2, evaluated);
    EXPECT_THAT(m_record.Pieces(), SizeIs(1));
}

TEST_F(LogLineTest, HostLineStandsInBranchesWithoutBraces)
{
    for (const bool first : {true, false})
        if (first)
            TOOLKIT_LOG(LogSeverity::Info) << "first";
        else
            TOOLKIT_LOG(LogSeverity::Info) << "second";

    // The branch belongs to the outer condition.
    if (m_record.Pieces().empty())
        TOOLKIT_LOG(LogSeverity::Info) << "never";
    else
        m_record.Add(L"branch");

    const std::vector<std::wstring> pieces = m_record.Pieces();
    ASSERT_THAT(pieces, SizeIs(3));
    EXPECT_EQ(L"first", FieldsOf(pieces[0]).at(4));
    EXPECT_EQ(L"second", FieldsOf(pieces[1]).at(4));
    EXPECT_EQ(L"branch", pieces[2]);
}

TEST_F(LogLineTest, HostLinesNestOnOneSourceLine)
{
    // clang-format off
    TOOLKIT_LOG(LogSeverity::Error) << "outer " << [] { TOOLKIT_LOG(LogSeverity::Info) << "inner " << [] { TOOLKIT_LOG(LogSeverity::Warning) << "innermost"; return 1; }(); return 2; }();
    // clang-format on
    const std::vector<std::wstring> pieces = m_record.Pieces();
    ASSERT_THAT(pieces, SizeIs(3));
    ExpectLine(LogSeverity::Warning, __LINE__ - 4, L"operator()", L"innermost", pieces[0]);
    ExpectLine(LogSeverity::Info, __LINE__ - 5, L"operator()", L"inner 1", pieces[1]);
    ExpectLine(LogSeverity::Error, __LINE__ - 6, L"TestBody", L"outer 2", pieces[2]);
}

TEST_F(LogLineTest, HostLineIsAnExpression)
{
    const auto log = [](int value) { return TOOLKIT_LOG(LogSeverity::Info) << value; };
    log(7);
    EXPECT_EQ(L"7", FieldsOf(m_record.Text()).at(4));
}

TEST_F(LogLineTest, HostLinesOfManyThreadsAreWhole)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back(
            [thread]
            {
                for (int i = 0; i < 200; ++i)
                    TOOLKIT_LOG(thread % 2 == 0 ? LogSeverity::Info : LogSeverity::Error)
                        << "thread " << thread << " line " << i;
            });
    for (std::thread& thread : threads)
        thread.join();

    std::vector<int> next(8, 0);
    const std::wregex message(L"thread (\\d) line (\\d+)");
    for (const std::wstring& piece : m_record.Pieces())
    {
        const std::vector<std::wstring> fields = FieldsOf(piece);
        ASSERT_THAT(fields, SizeIs(5));
        std::wsmatch match;
        ASSERT_TRUE(std::regex_match(fields[4], match, message));
        const int thread = std::stoi(match[1]);
        EXPECT_EQ(thread % 2 == 0 ? L"2" : L"0", fields[0]);
        EXPECT_EQ(next.at(static_cast<std::size_t>(thread))++, std::stoi(match[2]));
    }
    EXPECT_EQ(std::vector<int>(8, 200), next);
}

TEST(LogLine, SinkThatThrowsDoesNotEndTheProcess)
{
    class Throwing : public ILogger
    {
    public:
        Throwing() : ILogger(LogSeverity::Info) {}
        void Write(const TString<wchar_t>&) override { throw std::runtime_error("no"); }
    };
    const InstalledLogger installed(new Throwing);
    EXPECT_NO_THROW(TOOLKIT_LOG(LogSeverity::Info) << "lost");
}

TEST(LogLine, IsWantedComparesWithTheThreshold)
{
    EXPECT_FALSE(LogLine::IsWanted(LogSeverity::Error));
    Record record;
    const InstalledLogger installed(new RecordingLogger(record, LogSeverity::Warning));
    EXPECT_TRUE(LogLine::IsWanted(LogSeverity::Error));
    EXPECT_TRUE(LogLine::IsWanted(LogSeverity::Warning));
    EXPECT_FALSE(LogLine::IsWanted(LogSeverity::Info));
}
