// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// What the library's event filter adds to each event of the application, beside an empty filter.

#include "Report.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>

#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>

#include <memory>

#include <benchmark/benchmark.h>

namespace {

constexpr int kRepetitions = 25;
constexpr double kAllowedNs = 50.0;

class EmptyFilter : public QObject
{
public:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        return QObject::eventFilter(object, event);
    }
};

/// Counts the tooltip events that reach the library.
class CountingHost : public Vidlets::VLInterface
{
public:
    explicit CountingHost(VLContext& context)
        : VLInterface(context, {}, nullptr)
    {
    }

    QString keyForObject(QObject* /*object*/) override
    {
        ++asked;
        return QString();
    }

    int asked = 0;
};

/// The event goes to a plain object: what a widget makes of it would drown what is measured.
void send(benchmark::State& state, QEvent& event)
{
    QObject receiver;
    for ([[maybe_unused]] auto turn : state)
        benchmark::DoNotOptimize(QCoreApplication::sendEvent(&receiver, &event));
}

void sendThroughEmptyFilter(benchmark::State& state, QEvent& event)
{
    EmptyFilter filter;
    QCoreApplication::instance()->installEventFilter(&filter);
    send(state, event);
}

void sendThroughLibrary(benchmark::State& state, QEvent& event)
{
    VLContext context;
    CountingHost host(context);
    context.set(Vidlets::ckInstallEventFilter, true);
    context.set(Vidlets::ckDisabled, true);
    Vidlets::VLManager manager(&host, context, {}, nullptr);

    QHelpEvent toolTip(QEvent::ToolTip, QPoint(), QPoint());
    QObject receiver;
    QCoreApplication::sendEvent(&receiver, &toolTip);
    Report::verify(host.asked == 1, "the filter is installed");
    Report::verify(!manager.widget(), "there is no popup");
    send(state, event);
}

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    QEvent plain(QEvent::LanguageChange);
    QMouseEvent move(QEvent::MouseMove, QPointF(5, 5), QPointF(50, 50), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);

    const auto add = [](const char* name, auto operation, QEvent& event) {
        benchmark::RegisterBenchmark(name, [operation, &event](benchmark::State& state) {
            operation(state, event);
        })->MinTime(0.1);
    };
    add("plain-event", sendThroughLibrary, plain);
    add("plain-event-empty-filter", sendThroughEmptyFilter, plain);
    add("mouse-move", sendThroughLibrary, move);
    add("mouse-move-empty-filter", sendThroughEmptyFilter, move);

    std::vector<Report::Aim> aims;
    for (const char* event : {"plain-event", "mouse-move"}) {
        Report::Aim aim;
        aim.subject = std::string("event-filter-") + event;
        aim.measured = {event, Report::kProcessorNs};
        aim.baseline = {std::string(event) + "-empty-filter", Report::kProcessorNs};
        aim.comparison = Report::Comparison::Difference;
        aim.value = kAllowedNs;
        aim.unit = "ns";
        aims.push_back(aim);
    }
    return Report::run(argc, argv, kRepetitions, aims);
}
