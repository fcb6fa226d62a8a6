// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORCLIPS_H
#define AUTHORCLIPS_H

#include "AuthorClipReader.h"
#include "AuthorFinding.h"

namespace Vidlets {

/// The rules for clips.
class AuthorClips
{
public:
    explicit AuthorClips(AuthorFindings& findings);

    /// Returns whether a file of that name is a clip rather than a picture.
    static bool isClip(const QString& path);

    /// Checks the clip @p path, whose pictures may take @p memoryLimitBytes.
    void check(const QString& path, qint64 memoryLimitBytes);

private:
    void checkStream(const QString& path, const AuthorClip& clip);
    void checkPictures(const QString& path, const AuthorClip& clip);
    void checkRate(const QString& path, const AuthorClip& clip);
    void checkMemory(const QString& path, const AuthorClip& clip, qint64 limitBytes);
    void add(const QString& path, const char16_t* rule, const QString& message);

    AuthorFindings& m_findings;
};

} // namespace Vidlets

#endif
