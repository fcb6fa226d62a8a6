// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORQMLLINT_H
#define AUTHORQMLLINT_H

#include "AuthorSceneOutline.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QSet>

#include <functional>
#include <memory>

class QJsonObject;
class QProcess;
class QTemporaryDir;

namespace Vidlets {

/**
 * Has qmllint, a program of Qt, look at scenes.
 *
 * It is given copies of scenes and scripts and nothing else, so that no settings, module lists or
 * plugins of a package reach it, beside descriptions of the library's types. It is ended where it
 * takes too long.
 */
class AuthorQmllint
{
public:
    /// What is called with the number of scenes that qmllint has not answered about for a while.
    using OnWait = std::function<void(qsizetype scenes)>;

    explicit AuthorQmllint(AuthorFindings& findings);
    ~AuthorQmllint();

    /// Returns the path of qmllint, which the environment variable VIDLETS_QMLLINT may name; null
    /// where there is none.
    static QString find();

    /// For tests: how long it may take for one scene.
    void setTimeLimit(int milliseconds)
    {
        m_limitMs = milliseconds;
    }
    /// Has @p onWait called, once, as soon as there is something to wait for.
    void setOnWait(OnWait onWait)
    {
        m_onWait = std::move(onWait);
    }
    /// Adds the scene @p path. It lies at @p place among the others, relative.
    void add(const QString& path, const QString& place, const AuthorSceneOutline& scene);

    /// Reports what qmllint finds in all that was added. @p program is its path.
    void check(const QString& program);

private:
    /// The import that a copy has and the scene does not.
    struct Insertion
    {
        XmlPosition position;
        qsizetype offset = -1;
        QString text;
    };
    struct Copy
    {
        QString path;
        QString text;
        Insertion insertion;
        /// The names of objects in the scene.
        QSet<QString> ids;
    };

    static Insertion insertionFor(const AuthorSceneOutline& scene);
    bool writeTypes();
    void lint(const QStringList& files, int limitMs);
    bool run(const QStringList& files, qint64 limitMs, QByteArray& report);
    bool waitFor(QProcess& process, qint64 limitMs, qsizetype scenes);
    bool take(const QByteArray& report, const QStringList& files);
    void take(const Copy& copy, const QJsonObject& warning, const QStringList& lines);
    QString withOwnPaths(QString message) const;
    static bool isInserted(const Copy& copy, XmlPosition& position);
    static bool isLetPass(const Copy& copy, const QString& message, const QString& line,
                          qsizetype at);
    void unanswered(const QStringList& files, const QString& reason);

    AuthorFindings& m_findings;
    const std::unique_ptr<QTemporaryDir> m_directory;
    /// The canonical path of the directory.
    QString m_root;
    QString m_program;
    /// By the path of the copy.
    QHash<QString, Copy> m_copies;
    /// The directories of packages by those of their copies, each with the slash behind it.
    QHash<QString, QString> m_packages;
    QStringList m_files;
    OnWait m_onWait;
    int m_limitMs;
    QDeadlineTimer m_end;
};

} // namespace Vidlets

#endif
