#include "ui/settings/ChoiceRow.h"

#include "ui/settings/SegmentedPicker.h"

namespace vostel {

namespace {

QStringList labelsOf(const std::vector<Choice>& choices) {
    QStringList labels;
    for (const Choice& choice : choices) {
        labels << choice.label;
    }
    return labels;
}

}  // namespace

ChoiceRow::ChoiceRow(const QString& title, std::vector<Choice> offered, Binding<QString> binding,
                     QWidget* parent)
    : SettingsRow(title, parent),
      choices(std::move(offered)),
      value(std::move(binding)),
      picker(new SegmentedPicker(title, labelsOf(choices))) {
    setKeywords(labelsOf(choices).join(u' '));
    addControl(picker);
    connect(picker, &SegmentedPicker::chosen, this, [this](int index) {
        value.set(choices.at(static_cast<std::size_t>(index)).value);
        refresh();
    });
    refresh();
}

void ChoiceRow::refresh() {
    const QString stored = value.get();
    int index = 0;
    for (std::size_t i = 0; i < choices.size(); ++i) {
        if (choices[i].value == stored) {
            index = static_cast<int>(i);
        }
    }
    picker->setCurrent(index);
}

}  // namespace vostel
