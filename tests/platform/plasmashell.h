#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

/// What a script finds in the shell of Plasma: desktops with their plug-in and their groups of settings.
constexpr char shellScript[] = R"js(
var state = %1;
function Desktop(id) {
    this.id = id;
    this.readConfig = function (key) { return (state[id].groups[this.currentConfigGroup.join("/")] || {})[key] || ""; };
    this.writeConfig = function (key, value) {
        var name = this.currentConfigGroup.join("/");
        state[id].groups[name] = state[id].groups[name] || {};
        state[id].groups[name][key] = value;
    };
}
Object.defineProperty(Desktop.prototype, "wallpaperPlugin", {
    get: function () { return state[this.id].plugin; }, set: function (name) { state[this.id].plugin = name; } });
function desktops() { return Object.keys(state).map(function (id) { return new Desktop(id); }); }
%2
print(JSON.stringify(state));
)js";

/// Runs a script on the desktops of `state`, which it changes; gives what the script prints.
inline QByteArray runInShell(QJsonObject &state, const QByteArray &script)
{
    QProcess engine;
    engine.start(QStringLiteral("duk"), {QStringLiteral("--run-stdin")});
    engine.write(QByteArray(shellScript).replace("%1", QJsonDocument(state).toJson()).replace("%2", script));
    engine.closeWriteChannel();
    engine.waitForFinished();
    const QByteArrayList lines = engine.readAllStandardOutput().split('\n');
    if (engine.exitCode() != 0 || lines.size() < 3)
        qWarning("the script fails: %s %s", script.constData(), engine.readAllStandardError().constData());
    state = QJsonDocument::fromJson(lines.value(1)).object();
    return lines.first();
}

/// Two desktops, as one with a slideshow and one with a picture of its own.
constexpr char plasmaDesktops[] = R"js({"1": {"plugin": "org.kde.slideshow", "groups": {
"Wallpaper/org.kde.image/General": {"Image": "file:///it's \"old\".jpg", "FillMode": "2"}}},
"27": {"plugin": "org.kde.image", "groups": {
"Wallpaper/org.kde.image/General": {"Image": "file:///other.jpg", "FillMode": "1", "Blur": "true"}}}})js";
