#include "core/FirstRunDefaults.h"

namespace vostel::FirstRunDefaults {

namespace {

// What a fresh install starts with. It differs on purpose from what the settings objects fall back
// to when a key is missing; the flag of "claude_usage" belongs to no module and is kept for
// settings files that are exchanged.
constexpr char seed[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
    <key>anthropic.interval</key>
    <real>900.0</real>
    <key>app.showDock</key>
    <false/>
    <key>codex.interval</key>
    <real>900.0</real>
    <key>combined.enabled</key>
    <array><string>network</string><string>memory</string><string>gpu</string><string>cpu</string></array>
    <key>combined.order</key>
    <array><string>memory</string><string>gpu</string><string>cpu</string><string>network</string></array>
    <key>combined.spacing</key>
    <real>5.0</real>
    <key>cpu.color</key>
    <string>#00B5FF98</string>
    <key>cpu.ecore</key>
    <string>#00C77B97</string>
    <key>cpu.interval</key>
    <real>0.25</real>
    <key>cpu.label</key>
    <string>CPU</string>
    <key>cpu.showGraph</key>
    <false/>
    <key>cpu.showPerCore</key>
    <true/>
    <key>cpu.showPerCoreBars</key>
    <true/>
    <key>cpu.showSingle</key>
    <false/>
    <key>cpu.showSingleBar</key>
    <false/>
    <key>cpu.splitCores</key>
    <true/>
    <key>global.bg</key>
    <string>#FFFFFF18</string>
    <key>global.fg</key>
    <string>#00A4C89C</string>
    <key>global.labelSize</key>
    <real>5.0</real>
    <key>global.mono</key>
    <false/>
    <key>global.text</key>
    <string>#FFFFFFFF</string>
    <key>gpu.interval</key>
    <real>0.25</real>
    <key>gpu.label</key>
    <string>GPU</string>
    <key>mem.color</key>
    <string>#EE312B9B</string>
    <key>mem.fg</key>
    <string>#BC4D1EA7</string>
    <key>mem.interval</key>
    <real>5.0</real>
    <key>mem.label</key>
    <string>MEM</string>
    <key>module.anthropic.enabled</key>
    <false/>
    <key>module.claude_usage.enabled</key>
    <false/>
    <key>module.codex.enabled</key>
    <false/>
    <key>module.combined.enabled</key>
    <false/>
    <key>module.cpu.enabled</key>
    <true/>
    <key>module.gpu.enabled</key>
    <true/>
    <key>module.memory.enabled</key>
    <true/>
    <key>module.network.enabled</key>
    <true/>
    <key>net.displayMode</key>
    <string>opposing</string>
    <key>net.displayStyle</key>
    <string>bars</string>
    <key>net.downColor</key>
    <string>#E7BD00FF</string>
    <key>net.fg</key>
    <string>#00A4C89C</string>
    <key>net.interfaceMode</key>
    <string>automatic</string>
    <key>net.label</key>
    <string></string>
    <key>net.monochrome</key>
    <false/>
    <key>net.showNumbers</key>
    <true/>
    <key>net.upColor</key>
    <string>#C25023FF</string>
    <key>net.updateInterval</key>
    <real>1.0</real>
</dict>
</plist>
)";

}  // namespace

PropertyList values() {
    return PropertyList::parse(QByteArray::fromRawData(seed, sizeof seed - 1))
        .value_or(PropertyList());
}

void apply(DefaultsStore& store) {
    const PropertyList seeded = values();
    for (const QString& key : seeded.keys()) {
        if (!store.values().contains(key)) {
            store.copyFrom(seeded, key);
        }
    }
}

}  // namespace vostel::FirstRunDefaults
