// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef BADPACKAGE_H
#define BADPACKAGE_H

#include "PopupStage.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

/// The key of the tip whose file is bad.
QString badKey();

/// The bytes of a file below tests/data/broken. One that is missing ends the program.
QByteArray brokenFile(const QString& relativePath);

/// The names of the files in a folder of tests/data/broken, without their endings.
QStringList brokenFileNames(const QString& folder);

/**
 * A stage with a package "bad" in addition to the good one "tips".
 *
 * The bad one has a scene as good as the other's to begin with, and no control file.
 */
class BadPackage
{
public:
    /// With @p isGuarded set the content is guarded, else it is not.
    explicit BadPackage(bool isGuarded = false);
    /// Gives back the permissions that lock() took.
    ~BadPackage();
    Q_DISABLE_COPY_MOVE(BadPackage)

    /// The path of @p relativePath in the package.
    QString path(const QString& relativePath) const;
    /// The control file that counts.
    QString controlFile() const;
    void write(const QString& relativePath, const QByteArray& content);
    /// Takes all permissions of @p relativePath away as long as this lives.
    void lock(const QString& relativePath);

    /// Asks for the popup of @p key, and gives whether the manager says that it is there.
    bool show(const QString& key);

    PopupStage stage;

private:
    QStringList m_locked;
};

/// What is done to a package, or to the disk around it.
using Step = std::function<void(BadPackage&)>;

/// Steps that read as what they do, for BadCase.
namespace Steps {

Step inTurn(const Step& first, const Step& second);
Step file(const QString& path, const QByteArray& content);
Step controlFile(const QByteArray& content);
Step goodControlFile();
Step directory(const QString& path);
Step link(const QString& target, const QString& path);
Step removed(const QString& path);
Step locked(const QString& path);
/// A good control file, beside a key data file that the index is told of.
Step keyDataFile(const QByteArray& content);

} // namespace Steps

/// Pieces of content.
namespace Content {

QByteArray goodTip();
QByteArray goodFile();
/// A control file around @p tips.
QByteArray fileWith(const QByteArray& tips);

} // namespace Content

#endif
