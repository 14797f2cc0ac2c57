// A device for tests below DEVICE_ROOT: a root directory and the configuration that names it. Every
// device starts empty.
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

    // A link to the clip of that name; to nothing where clips are only looked at.
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
