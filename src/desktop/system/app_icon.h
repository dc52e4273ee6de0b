// The program's icon, a ramp and a soak over a base line, for the frame and its children.
#pragma once

#include <QIcon>
#include <QPixmap>

namespace pelvan::desktop {

inline QIcon app_icon() {
    // clang-format off
    static const char* const kPicture[] = {
    "16 16 4 1", ". c None", "b c #1F3A5F", "o c #F59B23", "w c #FFFFFF",
    "..bbbbbbbbbbbb..",
    ".bbbbbbbbbbbbbb.",
    "bbbbbbbbbbbbbbbb",
    "bbbbbbooooobbbbb",
    "bbbbbbooooobbbbb",
    "bbbbbobbbbobbbbb",
    "bbbbbobbbboobbbb",
    "bbbbobbbbbbobbbb",
    "bbbbobbbbbboobbb",
    "bbbobbbbbbbbobbb",
    "bbbobbbbbbbboobb",
    "bbobbbbbbbbbbobb",
    "bbobbbbbbbbbbobb",
    "bbwwwwwwwwwwwwbb",
    ".bbbbbbbbbbbbbb.",
    "..bbbbbbbbbbbb.."};
    // clang-format on
    const QPixmap small(kPicture);
    QIcon icon(small);
    icon.addPixmap(small.scaled(small.size() * 2)); // for task bars
    return icon;
}

} // namespace pelvan::desktop
