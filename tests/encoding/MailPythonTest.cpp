// SPDX-License-Identifier: MIT
#include <fstream>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/Archives.h"
#include "tests/support/TemporaryFolder.h"
#include "toolkit/encoding/Base64.h"
#include "toolkit/encoding/EncodedWords.h"
#include "toolkit/encoding/QuotedPrintable.h"

using Toolkit::Base64;
using Toolkit::EncodedWords;
using Toolkit::QuotedPrintable;
using Toolkit::Result;

namespace
{

// Makes the file "rows" of lines "<kind> <input> <output>", the latter two in hexadecimal digits; the output
// of what must fail is "-".
const char c_strRows[] = R"(
import base64, quopri, random, re
from email.header import Header, decode_header
random.seed(19)
rows = open('rows', 'w')
def row(kind, given, wanted):
    rows.write('%s x%s %s\n' % (kind, given.hex(), '-' if wanted is None else 'x' + wanted.hex()))
def some(characters, most):
    return bytes(random.choice(characters) for i in range(random.randrange(most)))
def strict(text):
    try:
        content = base64.b64decode(text, validate=True)
        return content if base64.b64encode(content) == text else None
    except ValueError:
        return None
def of_mail(text):
    text = text.replace(b'\n', b'')
    found = re.fullmatch(b'([A-Za-z0-9+/]*)(={0,2})', text)
    wanted = -len(found[1]) % 4 if found else 0
    return None if not found or wanted == 3 or len(found[2]) > wanted else base64.b64decode(found[1] + b'=' * wanted)
for i in range(2000):
    row('qp', *(lambda text: (text, quopri.decodestring(text)))(some(b'=\r\n \taAfF09g_\xe4=', 30)))
for i in range(2000):
    text = some(b'AQgwZm8+/==\n', 14)
    row('base64', text, strict(text))
    row('mime', text, of_mail(text))
for i in range(200):
    content = random.randbytes(random.randrange(400))
    row('base64', base64.b64encode(content), content)
    row('mime', base64.encodebytes(content), content)
    encoded = quopri.encodestring(content)
    row('qp', encoded, quopri.decodestring(encoded))
sets = {'utf-8': 'ab =?\u00e4\u20ac\u5c71', 'iso-8859-1': 'ab =?\u00e4\u00ff', 'koi8-r': 'ab \u041f\u0440',
        'iso-2022-jp': 'ab \u5c71\u7530', 'gb2312': 'ab \u4f60\u597d', 'big5': 'ab \u5c71\u7530',
        'windows-1251': 'ab \u041f\u0440', 'euc-kr': 'ab \uc0b0\uc77c'}
for charset, characters in sets.items():
    for i in range(100):
        text = 'a' + ''.join(random.choice(characters) for i in range(random.randrange(150))) + characters[-1]
        row('word', Header(text, charset).encode(linesep='\r\n').encode(), text.encode())
pieces = ['=?utf-8?Q?=C3=A4?=', '=?utf-8?Q?a_b?=', '=?iso-8859-1?Q?=E4?=', '=?utf-8?B?w6Q=?=', ' ', '\t', ' ', 'x', '(', '<a@b>', '=?', '?',
          '=?x?=']
for i in range(2000):
    header = '.' + ''.join(random.choice(pieces) for i in range(random.randrange(8)))
    parts = [(p if isinstance(p, str) else p.decode(c or 'ascii')) for p, c in decode_header(header)]
    row('word', header.encode(), ''.join(parts).encode())
)";

std::string Unhex(const std::string& digits)
{
    std::string bytes;
    for (std::size_t i = 1; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

Result<std::string> Decode(const std::string& kind, const std::string& text)
{
    if (kind == "qp")
        return QuotedPrintable::Decode(text);
    if (kind == "word")
        return EncodedWords::Decode(text);
    return kind == "mime" ? Base64::DecodeMime(text) : Base64::Decode(text);
}

} // namespace

TEST(MailEncodings, DecodeToWhatPythonDecodesTo)
{
    const ToolkitTest::TemporaryFolder folder;
    ToolkitTest::RunPython(folder, c_strRows);
    std::ifstream rows(folder.Path("rows"));
    std::map<std::string, int> counts;
    std::string kind;
    std::string given;
    std::string wanted;
    while (rows >> kind >> given >> wanted)
    {
        const Result<std::string> decoded = Decode(kind, Unhex(given));
        ASSERT_EQ(wanted != "-", decoded.has_value())
            << kind << ": " << ::testing::PrintToString(Unhex(given));
        ASSERT_EQ(Unhex(decoded ? wanted : ""), decoded.value_or(""))
            << kind << ": " << ::testing::PrintToString(Unhex(given));
        ++counts[kind];
    }
    EXPECT_EQ((std::map<std::string, int>{{"base64", 2200}, {"mime", 2200}, {"qp", 2200}, {"word", 2800}}),
              counts);
}
