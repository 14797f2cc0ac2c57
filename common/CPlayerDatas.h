// The play list of the process: file paths in play order, and a cursor. The list page fills it, the
// player page plays and clears it, the page manager creates and releases it. GUI thread only.
#pragma once

#include <QObject>
#include <QString>
#include <QVector>

class CPlayerDatas : public QObject
{
    Q_OBJECT

public:
    static CPlayerDatas* getInstance(); // creates the instance when there is none
    static void releaseInstance();

    void clearFiles();
    void addFile(const QString& path); // an empty path is ignored

    bool isEmpty() const;
    bool isEnd() const; // the cursor is behind the last file
    bool next();        // false if the list is empty or at its end; the cursor stays then

    QString currentFile() const; // empty when the cursor is not on a file

private:
    CPlayerDatas();
    ~CPlayerDatas() override = default;

    int m_nIndex = -1; // -1 before the first file, the count behind the last
    QVector<QString> m_vecFiles;

    static CPlayerDatas* s_var;
};
