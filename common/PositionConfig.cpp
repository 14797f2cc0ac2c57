#include "common/PositionConfig.h"

#include "common/DevicePaths.h"
#include "common/globals.h"

#include <QDebug>
#include <QFile>
#include <QStringList>
#include <QTextStream>

#include <array>

namespace {

constexpr int kEdges = 4;

struct Insets
{
    const char* key;
    std::array<int*, kEdges> edges; // left, top, right, bottom
};

const Insets kInsets[] = {
    {"EGL_MARGIN", {&g_nMarginLeft, &g_nMarginTop, &g_nMarginRight, &g_nMarginBottom}},
    {"EGL_PADDING", {&g_nPaddingLeft, &g_nPaddingTop, &g_nPaddingRight, &g_nPaddingBottom}},
};

void store(const Insets& insets, const QString& value)
{
    const QStringList fields = value.split(QLatin1Char(','));
    if (fields.size() != kEdges)
        return;
    for (int i = 0; i < kEdges; ++i)
        *insets.edges[i] = fields[i].toInt(nullptr, 10);
    qDebug() << "++ Margin: L T R B =" << *insets.edges[0] << " " << *insets.edges[1] << " "
             << *insets.edges[2] << " " << *insets.edges[3];
}

void readLine(const QString& line)
{
    const int equals = line.indexOf(QLatin1Char('='));
    if (equals < 0)
        return;
    const QString key = line.left(equals).trimmed();
    for (const Insets& insets : kInsets) {
        if (key == QLatin1String(insets.key))
            store(insets, line.mid(equals + 1).trimmed());
    }
}

} // namespace

void readPositionConfig()
{
    QFile file(QString::fromLocal8Bit(DevicePaths::kPositionConfig));
    if (file.open(QIODevice::ReadOnly | QIODevice::Text))
        readPositionConfig(file);
}

void readPositionConfig(QIODevice& text)
{
    QTextStream stream(&text);
    while (!stream.atEnd())
        readLine(stream.readLine().simplified());
}
