// The device's files for a test, below DEVICE_ROOT: a folder of recordings, empty at first, and the
// configuration that names it.
#pragma once

#include "common/DevicePaths.h"

#include <QtCore>

class TestDevice
{
public:
    explicit TestDevice(const QStringList& clips = {})
    {
        for (const QString& clip : clips)
            add(clip);
        write(DevicePaths::kSystemConfig, m_root.path().toLocal8Bit() + '\n');
        QFile::remove(DevicePaths::kPositionConfig);
    }

    // Makes a link to the clip, which may be missing if the test only lists it.
    void add(const QString& clip) const
    {
        QFile::link(QStringLiteral(CLIP_DIR "/") + clip, path(clip));
    }
    QString path(const QString& name) const { return m_root.filePath(name); }

    static void write(const QString& path, const QByteArray& text)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write(text);
    }

private:
    QTemporaryDir m_root;
};
