// Feeds any bytes to the readers of both configuration files. For ASCII, it compares the result
// with its own reading.
#include "common/PositionConfig.h"
#include "common/SystemConfig.h"
#include "common/globals.h"

#include <QBuffer>
#include <QTextCodec>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr size_t kEdges = 4;
using Insets = std::array<int, 2 * kEdges>; // margins, paddings

int* const kInsets[] = {&g_nMarginLeft,  &g_nMarginTop,  &g_nMarginRight,  &g_nMarginBottom,
                        &g_nPaddingLeft, &g_nPaddingTop, &g_nPaddingRight, &g_nPaddingBottom};

// Without assert(): it must hold in every build.
void require(bool holds)
{
    if (!holds)
        std::abort();
}

// Opens the bytes in the same mode as the readers open their files.
template <typename Reader> auto readWith(Reader reader, const std::string& bytes)
{
    QByteArray array = QByteArray::fromRawData(bytes.data(), static_cast<int>(bytes.size()));
    QBuffer buffer(&array);
    require(buffer.open(QIODevice::ReadOnly | QIODevice::Text));
    return reader(buffer);
}

Insets readInsets(QIODevice& text)
{
    Insets insets = {};
    for (int* inset : kInsets)
        *inset = 0;
    readPositionConfig(text);
    std::transform(std::begin(kInsets), std::end(kInsets), insets.begin(),
                   [](const int* inset) { return *inset; });
    return insets;
}

QString readRoot(QIODevice& text)
{
    return readVideoRoot(text);
}

std::string trimmed(const std::string& text)
{
    const auto isSpace = [](unsigned char c) { return std::isspace(c) != 0; };
    const auto from = std::find_if_not(text.begin(), text.end(), isSpace);
    return {from,
            std::find_if_not(text.rbegin(), std::make_reverse_iterator(from), isSpace).base()};
}

int plainNumber(const std::string& field)
{
    const std::string digits = trimmed(field);
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(digits.c_str(), &end, 10);
    const bool whole = end == digits.data() + digits.size() && errno == 0;
    return whole && value >= INT_MIN && value <= INT_MAX ? static_cast<int>(value) : 0;
}

std::vector<int> plainNumbers(const std::string& value)
{
    std::vector<int> numbers;
    std::istringstream fields(value + ','); // the last field ends like the others
    for (std::string field; std::getline(fields, field, ',');)
        numbers.push_back(plainNumber(field));
    return numbers;
}

Insets plainInsets(const std::string& text)
{
    Insets insets = {};
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const size_t equals = line.find('=');
        const std::string key = trimmed(line.substr(0, equals));
        const bool known = key == "EGL_MARGIN" || key == "EGL_PADDING";
        if (equals == std::string::npos || !known)
            continue;
        const std::vector<int> numbers = plainNumbers(line.substr(equals + 1));
        if (numbers.size() == kEdges)
            std::copy(numbers.begin(), numbers.end(),
                      insets.begin() + (key == "EGL_MARGIN" ? 0 : kEdges));
    }
    return insets;
}

// Whatever the bytes are, the path holds no line end.
void readAnything(const std::string& bytes)
{
    readWith(readInsets, bytes);
    const QString root = readWith(readRoot, bytes);
    require(!root.contains(QLatin1Char('\n')) && !root.contains(QLatin1Char('\r')));
}

void readPlainCharacters(std::string bytes)
{
    const Insets insets = readWith(readInsets, bytes);
    const QString root = readWith(readRoot, bytes);
    bytes.erase(std::remove(bytes.begin(), bytes.end(), '\r'), bytes.end());
    require(insets == plainInsets(bytes));
    require(root.toStdString() == bytes.substr(0, bytes.find('\n')));
}

void ignoreLine(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    qInstallMessageHandler(ignoreLine);
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    const std::string bytes(data, data + size);
    std::string plain = bytes;
    for (char& byte : plain)
        byte = static_cast<char>(byte & 0x7F);
    if (plain != bytes)
        readAnything(bytes);
    readPlainCharacters(plain);
    return 0;
}
