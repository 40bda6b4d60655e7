#include "monitors/gpu/GPUPopover.h"

#include <algorithm>
#include <cmath>

#include "core/SourceText.h"
#include "render/RateFormatter.h"

namespace vostel {

namespace {

constexpr std::size_t mostCards = 8;
constexpr int usualApps = 4;
constexpr double highestRate = 99'999;  // ms/s, of a hundred engines; more is nonsense

QString rateText(double rate) {
    return QStringLiteral("%1 ms/s").arg(std::lround(std::min(rate, highestRate)));
}

QString stateText(GPUState state) {
    switch (state) {
        case GPUState::asleep:
            return QStringLiteral("Asleep");
        case GPUState::silent:
            return QStringLiteral("Not responding");
        case GPUState::unknown:
            return QStringLiteral("Load unknown");
        case GPUState::absent:
            return QStringLiteral("No GPU found");
        case GPUState::awake:
            break;
    }
    return {};
}

}  // namespace

GPUPopover::GPUPopover(GPUViewModel& viewModel, const GPUSettings& gpuSettings,
                       std::function<void()> openSettings)
    : UsagePopover(QStringLiteral("GPU"), QStringLiteral("GPU utilisation, history"), viewModel,
                   gpuSettings),
      model(viewModel),
      absent(new EmptyState),
      note(new NoteLine),
      renderer(new KeyValueRow(QStringLiteral("Renderer"))),
      tiler(new KeyValueRow(QStringLiteral("Tiler"))),
      inUse(new KeyValueRow(QStringLiteral("In use"))),
      cardsTitle(new SectionTitle(QStringLiteral("ALL GPUS"))) {
    absent->setContent(QStringLiteral("gpu"), stateText(GPUState::absent));
    for (QWidget* piece : {static_cast<QWidget*>(absent), static_cast<QWidget*>(note),
                           static_cast<QWidget*>(renderer), static_cast<QWidget*>(tiler),
                           static_cast<QWidget*>(inUse), static_cast<QWidget*>(cardsTitle)}) {
        add(piece);
    }
    for (std::size_t i = 0; i < mostCards; ++i) {
        cards.push_back(new KeyValueRow(QString()));
        add(cards.back());
    }
    addTopApps(SystemApp::MonitorTab::CPU, QStringLiteral("Sampling…"), rateText,
               std::move(openSettings), usualApps);
    follow(model.ratesKnown, [this] {
        processes->setPlaceholder(model.ratesKnown.value() ? QStringLiteral("No GPU activity")
                                                           : QStringLiteral("Sampling…"));
    });
    follow(model.stats, [this] { showStats(); });
    follow(model.measured, [this] { showStats(); });
    follow(model.problem, [this] { showState(); });
    follow(model.cards, [this] { showCards(); });
    follow(model.state, [this] { showState(); });
}

void GPUPopover::showStats() {
    const GPUStats stats = model.stats.value();
    const bool exists = model.state.value() != GPUState::absent;
    const bool known = model.measured.value();
    header->setValue(exists ? percent(stats.utilization, known) : QString());
    renderer->setValue(percent(stats.renderer, known));
    tiler->setValue(percent(stats.tiler, known));
    inUse->setValue(known ? QString::fromStdString(RateFormatter::bytes(stats.inUseBytes))
                          : noValue);
}

void GPUPopover::showState() {
    const GPUState state = model.state.value();
    const bool exists = state != GPUState::absent;
    showStats();
    absent->setVisible(!exists && model.problem.value().isEmpty());
    for (QWidget* piece :
         {static_cast<QWidget*>(graph), static_cast<QWidget*>(renderer),
          static_cast<QWidget*>(tiler), static_cast<QWidget*>(inUse),
          static_cast<QWidget*>(processesTitle), static_cast<QWidget*>(processes)}) {
        piece->setVisible(exists);
    }
    note->setNote(!model.problem.value().isEmpty() ? QString()
                  : state == GPUState::silent      ? QStringLiteral("The GPU is not responding.")
                  : state == GPUState::unknown ? QStringLiteral("This GPU does not tell its load.")
                                               : QString(),
                  state == GPUState::silent ? NoteLine::Kind::Warning : NoteLine::Kind::Hint);
}

// One GPU is named in the heading; several have a line each.
void GPUPopover::showCards() {
    const QList<GPUCard> list = model.cards.value();
    QString detail;
    for (const GPUCard& card : list) {
        if (card.shown || list.size() == 1) {
            detail = card.name;
            if (card.state == GPUState::asleep) {  // the note tells of the other states
                detail += QStringLiteral(" · ") + stateText(card.state);
            }
        }
    }
    header->setDetail(detail);
    const std::size_t rows = list.size() > 1 ? static_cast<std::size_t>(list.size()) : 0;
    cardsTitle->setVisible(rows > 0);
    for (std::size_t i = 0; i < cards.size(); ++i) {
        cards[i]->setVisible(i < rows);
        if (i < rows) {
            const GPUCard& card = list[static_cast<qsizetype>(i)];
            cards[i]->setKey(card.name);
            cards[i]->setValue(card.state == GPUState::awake ? percent(card.utilization)
                                                             : stateText(card.state));
        }
    }
}

}  // namespace vostel
