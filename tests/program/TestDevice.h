// A device for tests below DEVICE_ROOT: a root directory with links to clips, and the configuration
// that names it. Every device starts empty.
#pragma once

#include "app/common/DevicePaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

class TestDevice
{
public:
    explicit TestDevice(const QStringList& clips = {})
    {
        for (const QString& clip : clips)
            add(clip);
        write(DevicePaths::kSystemConfig, m_root.path() + '\n');
        QFile::remove(DevicePaths::kPositionConfig);
    }

    void add(const QString& clip) const
    {
        QFile::link(QStringLiteral(CLIP_DIR "/") + clip, m_root.filePath(clip));
    }
    void setMargins(const QString& lines) const { write(DevicePaths::kPositionConfig, lines); }
    QString path(const QString& name) const { return m_root.filePath(name); }

private:
    static void write(const char* path, const QString& text)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write(text.toLocal8Bit());
    }

    QTemporaryDir m_root;
};
