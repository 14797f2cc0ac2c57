#include "common/SystemConfig.h"

#include "common/DevicePaths.h"

#include <QFile>
#include <QTextStream>

QString readVideoRoot()
{
    QFile file(QString::fromLocal8Bit(DevicePaths::kSystemConfig));
    return file.open(QIODevice::ReadOnly | QIODevice::Text) ? readVideoRoot(file) : QString();
}

QString readVideoRoot(QIODevice& text)
{
    return QTextStream(&text).readLine();
}
