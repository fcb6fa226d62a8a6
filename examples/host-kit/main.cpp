// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// What a host says to the host kit beyond the data paths.

#include <Vidlets/VLContext.h>
#include <Vidlets/VLManager.h>

#include <QApplication>
#include <QKeySequence>
#include <QMainWindow>
#include <QTableWidget>
#include <QWidget>

#include <VidletsHost/VLAccess.h>
#include <VidletsHost/VLHostInterface.h>
#include <VidletsHost/VLKeyTableIndex.h>

using namespace Qt::StringLiterals;

namespace {

// Keys that depend on where in a widget the pointer is.
class HostInterface : public Vidlets::VLHostInterface
{
public:
    using VLHostInterface::VLHostInterface;

    QString keyAt(QObject* object, const QPoint& globalPos, QRect* zone) override
    {
        if (object->objectName() != "paper"_L1)
            return VLHostInterface::keyAt(object, globalPos, zone);
        const auto* paper = static_cast<QWidget*>(object);
        const QRect margin(paper->mapToGlobal(QPoint()), QSize(20, paper->height()));
        if (!margin.contains(globalPos))
            return QString();
        if (zone)
            *zone = margin;
        return u"margin"_s;
    }
};

void giveKeys(QTableWidget& table)
{
    // The section has the key "prices.1" without it.
    auto* header = new QTableWidgetItem(u"Net"_s);
    header->setData(Vidlets::KeyRole, u"net price"_s);
    table.setHorizontalHeaderItem(1, header);
}

void setUp(Vidlets::VLHostInterface& vidlets)
{
    vidlets.setDocumentationBase(QUrl(u"https://docs.example.com/2/"_s));
    vidlets.setPinnedArea(Qt::RightDockWidgetArea);
    vidlets.warmUp();
}

void setKeys(Vidlets::VLHostInterface& vidlets)
{
    // Shift+F1 is taken here.
    vidlets.access()->setShowSequence(QKeySequence(Qt::CTRL | Qt::Key_F1));
}

void followContent(Vidlets::VLKeyTableIndex& index)
{
    // A tip of "de" serves a user in "de_AT", too.
    index.setLocaleChain(true);
    QObject::connect(&index, &Vidlets::VLKeyTableIndex::changed, &index,
                     [](const QStringList& keys) {
                         qInfo("new content for %ls", qUtf16Printable(keys.join(u", "_s)));
                     });
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QMainWindow window;
    auto* table = new QTableWidget(3, 2, &window);
    table->setObjectName(u"prices"_s);
    giveKeys(*table);
    window.setCentralWidget(table);
    window.show();

    VLContext context;
    HostInterface vidlets(context, {QStringLiteral(EXAMPLE_PACKAGES)});
    setUp(vidlets);
    setKeys(vidlets);
    if (auto* index = qobject_cast<Vidlets::VLKeyTableIndex*>(vidlets.manager()->index()))
        followContent(*index);
    return QApplication::exec();
}
