// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "FuzzSupport.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

/// Keeps the report readable: only what ends the process is worth a line.
void writeFatalMessages(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qUtf8Printable(text));
}

QString directoryTemplate()
{
    const QString memory = u"/dev/shm"_s;
    const bool usable = qEnvironmentVariableIsEmpty("TMPDIR") && QFileInfo(memory).isWritable();
    return (usable ? memory : QDir::tempPath()) + u"/vidlets-fuzz-XXXXXX"_s;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(writeFatalMessages);
    // Lives as long as the process, as the application of a host does.
    static auto* application = new QApplication(*argc, *argv);
    Q_UNUSED(application);
    return 0;
}

bool isGuardedRun()
{
    static const bool isGuarded = !qEnvironmentVariableIsEmpty("VIDLETS_FUZZ_GUARDED");
    return isGuarded;
}

FuzzDirectory::FuzzDirectory()
    : m_directory(directoryTemplate())
    , m_root(QFileInfo(m_directory.path()).canonicalFilePath())
{
    if (!m_directory.isValid())
        qFatal("There is no temporary directory: %s", qPrintable(m_directory.errorString()));
}

QString FuzzDirectory::path(const QString& relativePath) const
{
    return m_root + u'/' + relativePath;
}

QString FuzzDirectory::write(const QString& relativePath, const QByteArray& content) const
{
    const QString filePath = path(relativePath);
    QDir().mkpath(QFileInfo(filePath).path());
    QFile file(filePath);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("Could not write %s", qPrintable(filePath));
    return filePath;
}

XmlSurvey::XmlSurvey(const QByteArray& document)
{
    QXmlStreamReader reader(document);
    int openTags = 0;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::StartElement) {
            if (rootTag.isNull())
                rootTag = reader.qualifiedName().toString();
            ++openTags;
        } else if (token == QXmlStreamReader::EndElement) {
            --openTags;
        }
    }
    breaksOutsideRoot = reader.hasError() && openTags == 0;
}
