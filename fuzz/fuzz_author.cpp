// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// What the program for authors reads of a package.
//
// The first byte of the input tells what the rest is: a control file, key data, a scene, settings,
// a file of translations or a clip. There are no preconditions: nothing in a package may end the
// program.

#include "FuzzSupport.h"

#include <VidletsAuthor/AuthorClips.h>
#include <VidletsAuthor/AuthorControlReader.h>
#include <VidletsAuthor/AuthorSceneRules.h>
#include <VidletsAuthor/AuthorSettings.h>
#include <VidletsAuthor/AuthorTsFile.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

void readScene(const QByteArray& content, AuthorFindings& findings)
{
    const AuthorSceneOutline outline(QString::fromUtf8(content));
    AuthorSceneRules(u"/a.qml"_s, outline, findings).check();
}

/// What was read can be written, and what is written can be read.
void readTranslations(const QByteArray& content)
{
    AuthorTsFile::Fault fault;
    const auto file = AuthorTsFile::read(content, fault);
    if (!file)
        return;
    file->compiled();
    const auto again = AuthorTsFile::read(file->write(), fault);
    if (!again || again->messages.size() != file->messages.size())
        qFatal("A file of translations is lost once it is written.");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const FuzzDirectory directory;
    constexpr qint64 kMemoryLimitBytes = 1024;
    if (size == 0)
        return -1;
    const QByteArray content = inputBytes(data + 1, size - 1);
    AuthorFindings findings;
    switch (data[0]) {
    case 'c':
        AuthorControlReader(AuthorControlReader::Kind::ControlFile, u"a"_s, content, findings)
            .read();
        break;
    case 'k':
        AuthorControlReader(AuthorControlReader::Kind::KeyData, u"a"_s, content, findings).read();
        break;
    case 's':
        readScene(content, findings);
        break;
    case 't':
        directory.write(u"A.vidlets/"_s + AuthorSettings::fileName(), content);
        AuthorSettings().loadPackage(directory.path(u"A.vidlets"_s), findings);
        break;
    case 'l':
        readTranslations(content);
        break;
    case 'v':
        AuthorClips(findings).check(directory.write(u"clip.mp4"_s, content), kMemoryLimitBytes);
        break;
    default:
        return -1;
    }
    findings.unsuppressed();
    return 0;
}
