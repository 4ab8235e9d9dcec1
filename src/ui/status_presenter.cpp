// SPDX-License-Identifier: MIT
#include "ui/status_presenter.h"

#include <utility>

namespace sordin {

StatusPresenter::StatusPresenter(SordinEngine& engine, StatusItem& item, Actions actions)
    : engine_(engine), item_(item), actions_(std::move(actions)) {
    label_.setEngine(&engine);
    connect(&label_, &StatusLabel::changed, this, &StatusPresenter::present);
    for (const auto signal :
         {&SordinEngine::menuIconChanged, &SordinEngine::isEnabledChanged, &SordinEngine::adActiveChanged,
          &SordinEngine::simulatingChanged, &SordinEngine::adFadedChanged}) {
        connect(&engine, signal, this, &StatusPresenter::present);
    }
    present();
}

void StatusPresenter::present() {
    item_.setSymbol(engine_.menuIcon());
    item_.setText(label_.callText().isEmpty() ? label_.text() : label_.callText());
    item_.setMenu(menu());
}

std::vector<StatusMenuEntry> StatusPresenter::menu() {
    using Kind = StatusMenuEntry::Kind;
    const StatusMenuEntry line{Kind::separator, {}, true, false, {}};
    const bool atLogin = actions_.startsAtLogin();
    std::vector<StatusMenuEntry> entries{
        {Kind::action, label_.text(), false, false, {}},
        line,
        {Kind::action, tr("Show Panel"), true, false, actions_.showPanel},
        {Kind::action, tr("Open Sordin"), true, false, actions_.openMain},
        line,
        {Kind::toggle, tr("Enabled"), true, engine_.isEnabled(),
         [this](auto&) { engine_.setIsEnabled(!engine_.isEnabled()); }},
        {Kind::action, tr("Restore Volume"), engine_.adFaded(), false,
         [this](auto&) { engine_.restoreVolume(); }},
        {Kind::toggle, tr("Start at Login"), true, atLogin,
         [this, atLogin](auto&) {
             actions_.setStartsAtLogin(!atLogin);
             present();
         }},
        line,
        {Kind::action, tr("Quit"), true, false, [this](auto&) { actions_.quit(); }},
    };
    if (const QString call = label_.callText(); !call.isEmpty()) {
        entries.insert(entries.begin() + 1, {Kind::action, call, false, false, {}});
    }
    return entries;
}

}  // namespace sordin
