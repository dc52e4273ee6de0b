#include "desktop/system/theme_keeper.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QFile>
#include <QToolTip>
#include <cstdlib>

#include "platform/text_file.h"
#include "platform/whole_file.h"

namespace pelvan::desktop {
namespace {

constexpr char kSection[] = "THEME";
constexpr char kChoiceKey[] = "choice";
constexpr char kDesktopKey[] = "desktop said";

// Where desktops tell programs their colour scheme.
constexpr char kPortal[] = "org.freedesktop.portal.Desktop";
constexpr char kPath[] = "/org/freedesktop/portal/desktop";
constexpr char kInterface[] = "org.freedesktop.portal.Settings";
constexpr char kNamespace[] = "org.freedesktop.appearance";
constexpr char kColorScheme[] = "color-scheme";

bool has_session_bus() {
    if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) return true;
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !folder.isEmpty() && QFile::exists(folder + QStringLiteral("/bus"));
}

std::optional<Shade> shade_from_settings(const std::string& text) {
    switch (theme_choice(text)) {
    case ThemeChoice::Light:
        return Shade::Light;
    case ThemeChoice::Dark:
        return Shade::Dark;
    case ThemeChoice::AsDesktop:
        break;
    }
    return std::nullopt;
}

std::optional<Shade> shade_of_gtk() {
    const char* variable = std::getenv("GTK_THEME");
    const std::string folder = settings_folder([](const char* name) { return std::getenv(name); });
    for (const char* file : {"gtk-4.0/settings.ini", "gtk-3.0/settings.ini"}) {
        std::string bytes;
        if (!folder.empty() && read_whole_file(path_in(folder, file), bytes) != 0) bytes.clear();
        if (const auto shade = gtk_shade(variable ? variable : "", bytes)) return shade;
    }
    return std::nullopt;
}

Shade shade_of(const QPalette& palette) {
    constexpr int kMiddle = 128;
    return palette.color(QPalette::Window).lightness() < kMiddle ? Shade::Dark : Shade::Light;
}

/// The answer is a value in one wrapping or in two, by the call that was made.
std::optional<Shade> shade_of_reply(const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    QVariant value = reply.arguments().constFirst();
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return shade_of_color_scheme(value.toUInt());
}

QPalette dark_palette() {
    constexpr QColor kWindow(54, 56, 60);
    constexpr QColor kBase(30, 31, 33);
    constexpr QColor kText(232, 233, 235);
    constexpr QColor kFaint(140, 142, 146);
    QPalette palette(QColor(68, 71, 76), kWindow); // bevels follow the buttons' colour
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, kText);
    palette.setColor(QPalette::Base, kBase);
    palette.setColor(QPalette::AlternateBase, QColor(39, 41, 44));
    palette.setColor(QPalette::ToolTipBase, QColor(66, 69, 73));
    palette.setColor(QPalette::BrightText, QColor(255, 110, 100));
    palette.setColor(QPalette::Link, QColor(110, 180, 255));
    palette.setColor(QPalette::LinkVisited, QColor(190, 160, 240));
    palette.setColor(QPalette::Highlight, QColor(45, 110, 190));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, kFaint);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, kFaint);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(75, 78, 82));
    return palette;
}

} // namespace

QPalette palette_of(Shade shade) {
    if (shade == Shade::Dark) return dark_palette();
    QPalette palette(QColor(239, 239, 239));
    palette.setColor(QPalette::Highlight, QColor(48, 140, 198));
    return palette;
}

ThemeKeeper::ThemeKeeper(PersonalSettings& settings)
    : settings_(settings), shown_(shade_of(QApplication::palette())),
      tool_tips_(QToolTip::palette()) {
    sources_.colors = shown_;
    sources_.choice = theme_choice(settings.text(kSection, kChoiceKey));
    sources_.gtk = shade_of_gtk();
    if (has_session_bus())
        sources_.desktop = shade_from_settings(settings.text(kSection, kDesktopKey));
    ask_.setSingleShot(true);
    connect(&ask_, &QTimer::timeout, this, [this] { ask(); });
    apply();
}

void ThemeKeeper::follow_desktop() {
    if (!has_session_bus()) return;
    QDBusConnection::sessionBus().connect(QString(), QLatin1String(kPath),
                                          QLatin1String(kInterface),
                                          QStringLiteral("SettingChanged"), &ask_, SLOT(start()));
    ask();
}

void ThemeKeeper::ask() {
    QDBusMessage question =
        QDBusMessage::createMethodCall(QLatin1String(kPortal), QLatin1String(kPath),
                                       QLatin1String(kInterface), QStringLiteral("Read"));
    question << QLatin1String(kNamespace) << QLatin1String(kColorScheme);
    auto* answer =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        take_answer(shade_of_reply(answer->reply()));
        answer->deleteLater();
    });
}

void ThemeKeeper::take_answer(std::optional<Shade> shade) {
    sources_.desktop = shade;
    std::string text;
    if (shade) text = text_of(*shade == Shade::Dark ? ThemeChoice::Dark : ThemeChoice::Light);
    settings_.set_text(kSection, kDesktopKey, text);
    apply();
}

void ThemeKeeper::choose(ThemeChoice choice) {
    sources_.choice = choice;
    settings_.set_text(kSection, kChoiceKey, text_of(choice));
    apply();
}

void ThemeKeeper::apply() {
    const Shade wanted = shade_to_use(sources_);
    if (wanted == shown_) return;
    shown_ = wanted;
    const bool own = wanted != sources_.colors;
    // What the window system came with is put back by an empty palette.
    QApplication::setPalette(own ? palette_of(wanted) : QPalette());
    QToolTip::setPalette(own ? palette_of(wanted) : tool_tips_);
}

} // namespace pelvan::desktop
