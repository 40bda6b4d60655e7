// Renders sample popovers with every shared piece and hard content to PNG files in the folder
// given, or with "--show X,Y,W,H" puts an item there that opens one.

#include <cmath>
#include <cstdio>

#include <QApplication>
#include <QDir>
#include <QMouseEvent>

#include "core/SystemColors.h"
#include "render/RateFormatter.h"
#include "ui/BarMeter.h"
#include "ui/EmptyState.h"
#include "ui/FooterButtons.h"
#include "ui/HeaderRow.h"
#include "ui/KeyValueRow.h"
#include "ui/LineGraph.h"
#include "ui/MeterRow.h"
#include "ui/NoteLine.h"
#include "ui/Popover.h"
#include "ui/ProcessList.h"
#include "ui/SectionTitle.h"
#include "ui/Theme.h"

using namespace vostel;

namespace {

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

std::vector<double> wave(int count, double step) {
    std::vector<double> values;
    for (int i = 0; i < count; ++i) {
        values.push_back(0.5 + 0.45 * std::sin(i * step) * std::cos(i * 0.17));
    }
    return values;
}

const QColor green(0, 200, 83);

std::vector<ProcessEntry> sampleEntries(int count) {
    const QStringList names = {
        QStringLiteral("firefox"),
        QStringLiteral("A process with a very long name that goes on and on (renderer)"),
        QStringLiteral("Xorg"),
        QStringLiteral("plasmashell"),
        QStringLiteral("clang++"),
        QStringLiteral("日本語のプロセス名"),
        QStringLiteral("dbus-daemon"),
        QStringLiteral("kworker/u32:2-events_unbound")};
    std::vector<ProcessEntry> entries;
    for (int i = 0; i < count; ++i) {
        ProcessEntry entry;
        entry.name = names[i % names.size()];
        if (i == 0) {
            QPixmap pixmap(32, 32);
            pixmap.fill(QColor(255, 120, 20));
            entry.icon = QIcon(pixmap);
        }
        entry.values = {{QStringLiteral("%1%").arg(1611 / (i * i + 1)), green}};
        entries.push_back(entry);
    }
    return entries;
}

void fillCpu(Popover& popover) {
    auto* header = new HeaderRow(QStringLiteral("CPU"));
    header->setValue(QStringLiteral("100%"));
    popover.add(header);
    auto* graph = new LineGraph;
    graph->setHistory(wave(60, 0.3));
    graph->setColor(green);
    popover.add(graph);
    popover.add(new SectionTitle(QStringLiteral("PERFORMANCE (12)")));
    auto* performance = new BarMeter;
    performance->setValues(wave(12, 0.9));
    performance->setColor(green);
    popover.add(performance);
    popover.add(new SectionTitle(QStringLiteral("EFFICIENCY (4)")));
    auto* efficiency = new BarMeter;
    efficiency->setValues({0.0, 1.0, 0.02, 0.4});
    efficiency->setColor(systemBlue());
    efficiency->setSlots(12);
    popover.add(efficiency);
    popover.add(new SectionTitle(QStringLiteral("TOP APPS")));
    auto* list = new ProcessList(QStringLiteral("Sampling…"), 8);
    list->setEntries(sampleEntries(8));
    popover.add(list);
    popover.setFooter(new FooterButtons);
}

void fillManyCores(Popover& popover) {
    auto* header = new HeaderRow(QStringLiteral("CPU"));
    header->setValue(QStringLiteral("7%"));
    popover.add(header);
    for (const int count : {4, 16, 33, 64, 65, 96, 128, 192, 256, 1024}) {
        popover.add(new SectionTitle(QStringLiteral("PER CORE (%1)").arg(count)));
        auto* cores = new BarMeter;
        cores->setValues(wave(count, 0.4));
        cores->setColor(green);
        popover.add(cores);
    }
    popover.add(new SectionTitle(QStringLiteral("TOP APPS")));
    popover.add(new ProcessList(QStringLiteral("Sampling…")));
    popover.setFooter(new FooterButtons);
}

void fillNetwork(Popover& popover) {
    auto* header = new HeaderRow(QStringLiteral("Network"));
    header->setValue(text(RateFormatter::rate(1.3e6)));
    header->setDetail(QStringLiteral("Peak ") + text(RateFormatter::rate(9.9e8)) +
                      QStringLiteral(" / ") + text(RateFormatter::rate(1.2e7)));
    popover.add(header);
    auto* graph = new LineGraph;
    graph->setHistory(wave(60, 0.2));
    graph->setColor(systemBlue());
    popover.add(graph);
    auto* session = new KeyValueRow(QStringLiteral("Session"));
    session->setValue(text(RateFormatter::bytes(5e19)) + QStringLiteral(" / ") +
                      text(RateFormatter::bytes(12)));
    popover.add(session);
    auto* wan = new KeyValueRow(QStringLiteral("WAN"));
    wan->setCopyable(QStringLiteral("WAN address"));
    wan->setValue(QStringLiteral("2001:0db8:85a3:0000:0000:8a2e:0370:7334"));
    popover.add(wan);
    auto* name = new KeyValueRow(QStringLiteral("Name"));
    name->setCopyable(QStringLiteral("name"));
    name->setValue(QStringLiteral("host.example.net"));
    popover.add(name);
    auto* note = new NoteLine;
    note->setNote(
        QStringLiteral("Traffic of other users' processes is hidden. Install the helper with "
                       "its capability to see all."),
        NoteLine::Kind::Warning);
    popover.add(note);
    popover.add(new SectionTitle(QStringLiteral("TOP APPS")));
    auto* list = new ProcessList(QStringLiteral("No active network traffic"));
    std::vector<ProcessEntry> entries = sampleEntries(4);
    for (ProcessEntry& entry : entries) {
        entry.values = {{text(RateFormatter::rate(123456)), green},
                        {text(RateFormatter::rate(99)), systemBlue()}};
    }
    list->setEntries(entries);
    popover.add(list);
    popover.setFooter(new FooterButtons);
}

void fillGpu(Popover& popover) {
    auto* header = new HeaderRow(QStringLiteral("GPU"));
    header->setValue(QStringLiteral("3%"));
    header->setDetail(
        QStringLiteral("A graphics processor with a very long marketing name 8000 XT"));
    popover.add(header);
    auto* renderer = new MeterRow(QStringLiteral("Renderer"));
    renderer->setValue(QStringLiteral("100%"), 1);
    popover.add(renderer);
    auto* tiler = new MeterRow(QStringLiteral("Tiler"));
    tiler->setValue(QStringLiteral("3%"), 0.03);
    popover.add(tiler);
    auto* memory = new MeterRow(QStringLiteral("In use"));
    memory->setValue(text(RateFormatter::bytes(7.3e9)), 0.45);
    popover.add(memory);
    auto* hint = new NoteLine;
    hint->setNote(QStringLiteral("Asleep"), NoteLine::Kind::Hint, QStringLiteral("moon.zzz"));
    popover.add(hint);
    auto* empty = new EmptyState;
    empty->setContent(QStringLiteral("gpu"), QStringLiteral("No graphics processor found"),
                      QStringLiteral("Vostel looks again when one is plugged in."));
    popover.add(empty);
    popover.setFooter(new FooterButtons(false));
}

struct Sample {
    const char* name;
    void (*fill)(Popover&);
};

constexpr Sample samples[] = {
    {"cpu", fillCpu}, {"many", fillManyCores}, {"network", fillNetwork}, {"gpu", fillGpu}};

int renderAll(const QString& folder) {
    QDir().mkpath(folder);
    for (const Appearance appearance : {Appearance::Dark, Appearance::Light}) {
        Theme::set(appearance);
        for (const Sample& sample : samples) {
            for (const double scale : {1.0, 2.0}) {
                Popover popover(QString::fromLatin1(sample.name));
                sample.fill(popover);
                const QString file =
                    QStringLiteral("%1/%2-%3-%4x.png")
                        .arg(folder, QString::fromLatin1(sample.name),
                             appearance == Appearance::Dark ? QStringLiteral("dark")
                                                            : QStringLiteral("light"))
                        .arg(scale);
                if (!popover.snapshot(scale).save(file)) {
                    std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
                    return 1;
                }
            }
        }
    }
    return 0;
}

// Stands for an item of a bar: opens and closes the popover as an item does.
class Item : public QWidget {
  public:
    explicit Item(Popover& target)
        : QWidget(nullptr, Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint),
          popover(target) {}

  protected:
    void mouseReleaseEvent(QMouseEvent* event) override {
        if (!popover.closedByPressAt(event->globalPosition().toPoint())) {
            popover.showAt(geometry());
        }
    }

  private:
    Popover& popover;
};

int showOne(const QStringList& place) {
    Popover popover(QStringLiteral("Network"));
    fillNetwork(popover);
    const auto say = [](const char* what) {
        std::puts(what);
        std::fflush(stdout);
    };
    QObject::connect(&popover, &Popover::aboutToShow, qApp, [=] { say("opened"); });
    QObject::connect(&popover, &Popover::closed, qApp, [=] { say("closed"); });
    for (auto* footer : popover.findChildren<FooterButtons*>()) {
        QObject::connect(footer, &FooterButtons::monitorRequested, qApp, [=] { say("monitor"); });
        QObject::connect(footer, &FooterButtons::settingsRequested, qApp, [=] { say("settings"); });
    }
    Item item(popover);
    item.setGeometry(place[0].toInt(), place[1].toInt(), place[2].toInt(), place[3].toInt());
    item.show();
    return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() == 3 && arguments[1] == QStringLiteral("--show") &&
        arguments[2].split(u',').size() == 4) {
        return showOne(arguments[2].split(u','));
    }
    if (arguments.size() != 2) {
        std::fputs("usage: vostel_gallery FOLDER | --show X,Y,W,H\n", stderr);
        return 2;
    }
    return renderAll(arguments[1]);
}
