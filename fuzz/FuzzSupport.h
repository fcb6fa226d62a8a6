// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef FUZZSUPPORT_H
#define FUZZSUPPORT_H

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

/// A directory that goes with the process, in memory where the machine offers that.
class FuzzDirectory
{
public:
    FuzzDirectory();

    /// The canonical path of @p relativePath in the directory.
    QString path(const QString& relativePath) const;
    /// Writes @p content to @p relativePath, with the directories above it. Returns the path.
    QString write(const QString& relativePath, const QByteArray& content) const;

private:
    QTemporaryDir m_directory;
    QString m_root;
};

/// Whether the run is one with guarded content, in which no input may end the process. It is asked
/// for with the environment variable VIDLETS_FUZZ_GUARDED.
bool isGuardedRun();

/// What a plain reader finds in an XML document.
struct XmlSurvey
{
    explicit XmlSurvey(const QByteArray& document);

    /// The qualified name of the root; null where there is none.
    QString rootTag;
    /// Whether the document is faulty with no tag open: before the root or behind it, as in an
    /// empty file. The parser ends the process on that by design, so it is no finding.
    bool breaksOutsideRoot = false;
};

/// The bytes of the input, without a copy.
inline QByteArray inputBytes(const uint8_t* data, size_t size)
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(data),
                                   static_cast<qsizetype>(size));
}

#endif
