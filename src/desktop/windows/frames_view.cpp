#include "desktop/windows/frames_view.h"

#include <QAbstractTableModel>
#include <QAction>
#include <QEvent>
#include <QFont>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/bindings/qt_text.h"
#include "listen/frame_text.h"
#include "text/bytes.h"
#include "text/strings.h"

namespace pelvan::desktop {
namespace {

constexpr int kBeatMs = 200;
constexpr int kRowMargin = 6;
constexpr int kFilterCharacters = 14;
constexpr std::size_t kMaxTip = 1500; // characters of a tool tip

/// What a column is at least as wide as.
constexpr std::array<const char*, kFrameColumns> kSamples{
    "16:30:05.250 ",           "Gap ms ",   "Reply ms ",
    "request, no reply ",      "Address ",  "Function ",
    "0 = 12345, 1 = 12345, 2", "CRC wrong "};

bool is_number(FrameColumn column) {
    switch (column) {
    case FrameColumn::Gap:
    case FrameColumn::ReplyTime:
    case FrameColumn::Address:
    case FrameColumn::Function:
        return true;
    default:
        return false;
    }
}

QString tip(const ListenedFrame& frame) {
    const std::string text = shortened(frame_values(frame), kMaxTip) +
                             "\nBytes: " + shortened(hex_bytes(frame.bytes), kMaxTip);
    return Qt::convertFromPlainText(to_qt(text), Qt::WhiteSpaceNormal);
}

} // namespace

/// The rows of the panel's selection, as many as the table was told of.
class FramesModel : public QAbstractTableModel {
  public:
    FramesModel(FrameSelection& selection, QObject* parent)
        : QAbstractTableModel(parent), selection_(selection),
          rows_(static_cast<int>(selection.size())) {}

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : rows_;
    }
    [[nodiscard]] int columnCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(kFrameColumns);
    }
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override {
        if (orientation != Qt::Horizontal) return {};
        if (role == Qt::DisplayRole)
            return to_qt(kFrameTitles.at(static_cast<std::size_t>(section)));
        if (role == Qt::ToolTipRole)
            return QStringLiteral("Times are those of the lumps in which the adapter delivers the "
                                  "bytes. What came in one lump has no time between.");
        return {};
    }
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        const auto row = static_cast<std::size_t>(index.row());
        if (!index.isValid() || row >= selection_.size()) return {};
        const ListenedFrame* frame = selection_.row(row);
        const auto column = static_cast<FrameColumn>(index.column());
        if (!frame) return {};
        switch (role) {
        case Qt::DisplayRole:
            return to_qt(frame_cell(*frame, column));
        case Qt::ToolTipRole:
            return tip(*frame);
        case Qt::TextAlignmentRole:
            return QVariant(Qt::AlignVCenter |
                            (is_number(column) ? Qt::AlignRight : Qt::AlignLeft));
        case Qt::FontRole:
            return font(*frame);
        default:
            return {};
        }
    }

    /// Takes in what came and drops what went; how many rows went.
    int catch_up() {
        const int gone = static_cast<int>(selection_.gone());
        if (gone > 0) {
            beginRemoveRows({}, 0, gone - 1);
            selection_.drop_gone();
            rows_ -= gone;
            endRemoveRows();
        }
        const int fresh = static_cast<int>(selection_.fresh());
        if (fresh > 0) beginInsertRows({}, rows_, rows_ + fresh - 1);
        selection_.take_new();
        rows_ += fresh;
        if (fresh > 0) endInsertRows();
        return gone;
    }
    void reread() {
        beginResetModel();
        rows_ = static_cast<int>(selection_.size());
        endResetModel();
    }

  private:
    /// What somebody looks for stands out, whatever the colours of the desktop are.
    static QVariant font(const ListenedFrame& frame) {
        const bool refused = frame.info.kind == FrameKind::ExceptionReply;
        const bool damaged = frame.info.kind == FrameKind::Damaged;
        if (!refused && !damaged && frame.answer != Answer::Missing) return {};
        QFont font;
        font.setBold(!damaged);
        font.setItalic(damaged);
        return font;
    }

    FrameSelection& selection_;
    int rows_;
};

FramesView::FramesView(const BindContext& context, FramesPanel& panel)
    : context_(context), panel_(panel), model_(new FramesModel(panel.selection, this)),
      table_(new QTableView),
      rows_changed_(panel.rows_changed.subscribe([this] { show_all_again(); })) {
    make_table();
    add_copying();
    lay_out();
    panel_.selected_rows = [this] { return selected(); };
    auto* beat = new QTimer(this);
    connect(beat, &QTimer::timeout, this, [this] {
        const bool changed =
            panel_.traffic().revision() != shown_ || panel_.selection.paused() != was_paused_;
        if (changed && isVisible()) catch_up();
    });
    beat->start(kBeatMs);
}

FramesView::~FramesView() {
    panel_.selected_rows = {};
}

void FramesView::make_table() {
    table_->setObjectName(QStringLiteral("frames"));
    table_->setAccessibleName(QStringLiteral("Modbus frames of both directions"));
    table_->setModel(model_);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setTabKeyNavigation(false);
    table_->setWordWrap(false);
    table_->setAlternatingRowColors(true);
    table_->setCornerButtonEnabled(false);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    QHeaderView& header = *table_->horizontalHeader();
    header.setHighlightSections(false);
    header.setSectionResizeMode(static_cast<int>(FrameColumn::Values), QHeaderView::Stretch);
    fit_rows();
}

void FramesView::add_copying() {
    const auto copy = [this](bool as_csv) {
        context_.run([this, as_csv] { panel_.copy(as_csv); });
    };
    auto* key = new QShortcut(QKeySequence::Copy, table_);
    key->setContext(Qt::WidgetShortcut);
    connect(key, &QShortcut::activated, this, [copy] { copy(false); });
    table_->setContextMenuPolicy(Qt::ActionsContextMenu);
    for (const bool as_csv : {false, true}) {
        auto* action = new QAction(
            as_csv ? QStringLiteral("Copy as CS&V") : QStringLiteral("&Copy as Text"), table_);
        connect(action, &QAction::triggered, this, [copy, as_csv] { copy(as_csv); });
        table_->addAction(action);
    }
}

void FramesView::lay_out() {
    auto* filter = new QHBoxLayout;
    const auto add = [&](Label& label, TextBox& box) {
        auto* edit = bound<QLineEdit>(context_, box);
        edit->setMaximumWidth(edit->fontMetrics().averageCharWidth() * kFilterCharacters);
        edit->setPlaceholderText(QStringLiteral("all"));
        filter->addWidget(label_for(context_, label, edit));
        filter->addWidget(edit);
    };
    add(panel_.lbl_FrameAddress, panel_.txt_FrameAddress);
    add(panel_.lbl_FrameFunction, panel_.txt_FrameFunction);
    filter->addWidget(bound<QPushButton>(context_, panel_.cmd_AllFrames));
    auto* note = bound<QLabel>(context_, panel_.lbl_Frames);
    note->setWordWrap(true);
    filter->addWidget(note, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(filter);
    layout->addWidget(table_, 1);
}

void FramesView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    catch_up();
}

void FramesView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) fit_rows();
}

void FramesView::fit_rows() {
    const QFontMetrics metrics = table_->fontMetrics();
    table_->verticalHeader()->setDefaultSectionSize(metrics.height() + kRowMargin);
    for (std::size_t i = 0; i < kFrameColumns; ++i)
        table_->horizontalHeader()->resizeSection(
            static_cast<int>(i), metrics.horizontalAdvance(to_qt(kSamples.at(i))) + 3 * kRowMargin);
}

void FramesView::catch_up() {
    shown_ = panel_.traffic().revision();
    was_paused_ = panel_.selection.paused();
    QScrollBar& bar = *table_->verticalScrollBar();
    const int top = bar.value();
    const bool follows = top >= bar.maximum() && !was_paused_;
    const int gone = model_->catch_up();
    if (follows)
        table_->scrollToBottom();
    else if (gone > 0)
        bar.setValue(std::max(0, top - gone)); // the same frames stay in sight
    table_->viewport()->update();              // a request may have become an unanswered one
    panel_.refresh_note();
}

void FramesView::show_all_again() {
    model_->reread();
    catch_up();
    if (!was_paused_) table_->scrollToBottom();
}

std::vector<std::size_t> FramesView::selected() const {
    std::vector<std::size_t> rows;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows())
        rows.push_back(static_cast<std::size_t>(index.row()));
    std::sort(rows.begin(), rows.end());
    return rows;
}

} // namespace pelvan::desktop
