#include "desktop/system/qt_dialogs.h"

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

struct ButtonFace {
    QMessageBox::StandardButton button;
    const char* text; // with its access key
    MessageAnswer answer;
};

/// The last one is what closing the box means.
std::vector<ButtonFace> faces(MessageButtons buttons) {
    switch (buttons) {
    case MessageButtons::YesNo:
    case MessageButtons::YesNoPreferNo:
        return {{QMessageBox::Yes, "&Yes", MessageAnswer::Yes},
                {QMessageBox::No, "&No", MessageAnswer::No}};
    case MessageButtons::RetryCancel:
        return {{QMessageBox::Retry, "&Retry", MessageAnswer::Retry},
                {QMessageBox::Cancel, "&Cancel", MessageAnswer::Cancel}};
    case MessageButtons::RetrySkipCancel:
        return {{QMessageBox::Retry, "&Retry", MessageAnswer::Retry},
                {QMessageBox::Ignore, "&Skip", MessageAnswer::Skip},
                {QMessageBox::Cancel, "&Cancel", MessageAnswer::Cancel}};
    case MessageButtons::Ok:
        break;
    }
    return {{QMessageBox::Ok, "&OK", MessageAnswer::Ok}};
}

/// With places where a long word may be broken: a box is as wide as the longest that it shows.
QString breakable(const QString& line) {
    constexpr int kMaxWord = 60;
    constexpr QChar kBreak(0x200B); // has no width
    QString out;
    int length = 0;
    for (const QChar character : line) {
        length = character.isSpace() ? 0 : length + 1;
        out += character;
        if (length % kMaxWord == 0 && length > 0) out += kBreak;
    }
    return out;
}

QString title_or_application(const std::string& title) {
    return title.empty() ? QString::fromLatin1(kApplicationTitle) : to_qt(title);
}

/// A file that is given as directory (the last one chosen, say) stands for the folder it lies in.
QString folder_of(const std::string& directory) {
    const QFileInfo given(to_qt(directory));
    return given.isDir() ? given.filePath() : given.path();
}

void prepare(QFileDialog& dialog, const FileDialogRequest& request) {
    if (!request.title.empty()) dialog.setWindowTitle(to_qt(request.title));
    const QStringList filters = name_filters(request.filter);
    if (!filters.isEmpty()) dialog.setNameFilters(filters);
    if (!request.initial_directory.empty())
        dialog.setDirectory(folder_of(request.initial_directory));
    if (!request.file_name.empty()) dialog.selectFile(to_qt(request.file_name));
    dialog.setDefaultSuffix(to_qt(request.default_extension));
    dialog.setFileMode(request.must_exist ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !request.overwrite_prompt);
}

/// A list of files below the rest of the dialog; choosing one opens it.
void offer(QFileDialog& dialog, const std::vector<std::string>& files) {
    dialog.setOption(QFileDialog::DontUseNativeDialog); // the desktop's own has no place for it
    auto* grid = qobject_cast<QGridLayout*>(dialog.layout());
    if (grid == nullptr) return;
    auto* box = new QComboBox;
    box->setObjectName(QStringLiteral("recent_files"));
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setPlaceholderText(QStringLiteral("Choose one to open it"));
    for (const std::string& file : files) {
        const QFileInfo info(to_qt(file));
        box->addItem(info.fileName() + QStringLiteral("  \u2013  ") +
                         QDir::toNativeSeparators(info.absolutePath()),
                     to_qt(file));
    }
    box->setCurrentIndex(-1);
    auto* label = new QLabel(QStringLiteral("&Recent files:"));
    label->setBuddy(box);
    const int row = grid->rowCount();
    grid->addWidget(label, row, 0);
    grid->addWidget(box, row, 1, 1, -1);
    QObject::connect(box, &QComboBox::activated, &dialog, [&dialog, box](int index) {
        dialog.selectFile(box->itemData(index).toString());
        static_cast<QDialog&>(dialog).accept();
    });
}

/// As wide as its title needs: the window system cuts what has no room beside its buttons.
int width_for_title(const QString& title) {
    constexpr int kButtons = 110; // of the title bar
    QFont font = QApplication::font("QMdiSubWindowTitleBar");
    font.setBold(true);
    return QFontMetrics(font).horizontalAdvance(title) + kButtons;
}

void widen_for_title(QMessageBox& box) {
    auto* grid = qobject_cast<QGridLayout*>(box.layout());
    if (grid == nullptr) return; // it takes no other width
    auto* width = new QSpacerItem(width_for_title(box.windowTitle()), 0);
    grid->addItem(width, grid->rowCount(), 0, 1, grid->columnCount());
}

} // namespace

QString box_text(const std::string& text) {
    constexpr qsizetype kMaxCharacters = 1500;
    constexpr qsizetype kMaxLines = 25;
    QString all = to_qt(text);
    all.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
    QStringList lines = all.left(kMaxCharacters).split(u'\n');
    const bool cut = all.size() > kMaxCharacters || lines.size() > kMaxLines;
    lines = lines.mid(0, kMaxLines);
    for (QString& line : lines)
        line = breakable(visible_line(from_qt(line)));
    return lines.join(u'\n') + (cut ? QStringLiteral("\u2026") : QString());
}

QStringList name_filters(const std::string& filter) {
    const QStringList parts = to_qt(filter).split(u'|');
    QStringList out;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QStringList patterns = parts[i + 1].split(u';', Qt::SkipEmptyParts);
        // "All files" of the filter's own world; here names without a point are files as well.
        patterns.replaceInStrings(QStringLiteral("*.*"), QStringLiteral("*"));
        const QString words = parts[i].section(u'(', 0, 0).trimmed();
        if (!patterns.isEmpty()) out += words + QStringLiteral(" (") + patterns.join(u' ') + u')';
    }
    return out;
}

bool is_read_only(const QString& path) {
    const QFileInfo file(path);
    constexpr QFile::Permissions kAnyWrite =
        QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    return file.exists() && (!file.isWritable() || !(file.permissions() & kAnyWrite));
}

MessageAnswer QtDialogs::message_box(const std::string& text, const std::string& title,
                                     MessageButtons buttons, MessageIcon icon) {
    QMessageBox box(QApplication::activeWindow());
    box.setWindowTitle(title_or_application(title));
    box.setTextFormat(Qt::PlainText);
    box.setText(box_text(text));
    box.setIcon(icon == MessageIcon::Exclamation ? QMessageBox::Warning : QMessageBox::NoIcon);
    const std::vector<ButtonFace> shown = faces(buttons);
    for (const ButtonFace& face : shown)
        box.addButton(face.button)->setText(QString::fromLatin1(face.text));
    box.setDefaultButton(buttons == MessageButtons::YesNoPreferNo ? QMessageBox::No
                                                                  : shown.front().button);
    box.setEscapeButton(shown.back().button);
    widen_for_title(box);
    before_opening_();
    const int pressed = box.exec();
    for (const ButtonFace& face : shown)
        if (pressed == face.button) return face.answer;
    return shown.back().answer;
}

std::string QtDialogs::input_box(const std::string& prompt, const std::string& title,
                                 const std::string& default_text) {
    return ask_text({prompt, title, default_text, {}}).value_or(std::string());
}

std::optional<std::string> QtDialogs::ask_text(const TextQuestion& question) {
    QInputDialog box(QApplication::activeWindow());
    box.setWindowTitle(title_or_application(question.title));
    box.setInputMode(QInputDialog::TextInput);
    if (!question.suggestions.empty()) {
        QStringList suggestions;
        for (const std::string& each : question.suggestions)
            suggestions.append(to_qt(each));
        box.setComboBoxEditable(true);
        box.setComboBoxItems(suggestions);
    }
    box.setLabelText(box_text(question.prompt));
    box.setTextValue(to_qt(question.default_text));
    if (auto* label = box.findChild<QLabel*>()) label->setTextFormat(Qt::PlainText);
    if (auto* entry = box.findChild<QLineEdit*>()) entry->setAccessibleName(to_qt(question.prompt));
    if (auto* combo = box.findChild<QComboBox*>()) {
        combo->setAccessibleName(to_qt(question.prompt));
        combo->lineEdit()->selectAll();
    }
    box.setMinimumWidth(width_for_title(box.windowTitle()));
    before_opening_();
    if (box.exec() != QDialog::Accepted) return std::nullopt;
    return from_qt(box.textValue());
}

std::optional<std::string> QtDialogs::open_file(const FileDialogRequest& request) {
    return choose(request, true);
}

std::optional<std::string> QtDialogs::save_file(const FileDialogRequest& request) {
    return choose(request, false);
}

std::optional<std::string> QtDialogs::choose(const FileDialogRequest& request, bool open) {
    RecentFiles* recent = request.kind.empty() ? nullptr : recent_;
    std::vector<std::string> files;
    if (open && recent != nullptr) files = recent->of(request.kind);
    before_opening_();
    for (;;) {
        QFileDialog dialog(QApplication::activeWindow());
        if (!files.empty()) offer(dialog, files);
        dialog.setAcceptMode(open ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
        prepare(dialog, request);
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
            return std::nullopt;
        const std::string path = from_qt(dialog.selectedFiles().constFirst());
        if (!request.refuse_read_only || !is_read_only(to_qt(path))) {
            if (recent != nullptr) recent->add(request.kind, path);
            return path;
        }
        message_box(path + "\nThis file may only be read. Choose another name.", request.title,
                    MessageButtons::Ok, MessageIcon::Exclamation);
    }
}

} // namespace pelvan::desktop
