#pragma once

#include <QStringView>

/// The style sheet of the application. Of two rules with equal specificity the later one wins, so the order matters.
inline constexpr QStringView themeStyleSheet = uR"css(
QMainWindow, QWidget { background: #140704; color: #fff4de; font-family: 'Helvetica Neue'; font-size: 14px; }
QFrame#PanelCard, QFrame#StatusCard { background: #2a1308; border: 1px solid #7d3d0c; border-radius: 18px; }
QLabel#HeroTitle { font-size: 28px; font-weight: 700; color: #fff4de; }
QLabel#CardTitle { font-size: 22px; font-weight: 700; color: #ffb25b; }
QLabel#MutedLabel, QLabel#MutedValue, QLabel#StatusText { color: #f0c79e; }
QLabel#PrimaryValue { font-size: 20px; font-weight: 700; }
QLabel#LogoPanel {
    background: #1f0d06; border: 1px solid #7d3d0c; border-radius: 16px; color: #ffb25b; font-size: 18px;
    font-weight: 700;
}
QLineEdit, QPlainTextEdit, QComboBox, QTableWidget {
    background: #3b1d0f; color: #fff4de; border: 1px solid #9b5416; border-radius: 12px; padding: 10px 12px;
    selection-background-color: #ff8f1f;
}
QLineEdit:disabled, QPlainTextEdit:disabled, QComboBox:disabled { color: #be9a7a; }
QPlainTextEdit { padding-top: 10px; }
QPushButton {
    background: #5d280f; color: #fff4de; border: 1px solid #c56b18; border-radius: 14px; padding: 11px 16px;
    font-weight: 700;
}
QPushButton:hover { background: #733313; }
QPushButton:disabled { color: #d0a784; border-color: #7f562f; background: #4a2511; }
QCheckBox { spacing: 10px; }
QCheckBox::indicator { width: 18px; height: 18px; }
QCheckBox::indicator:unchecked { background: #3b1d0f; border: 1px solid #9b5416; border-radius: 5px; }
QCheckBox::indicator:checked { background: #ff8f1f; border: 1px solid #ffb25b; border-radius: 5px; }
QTabWidget::pane { border: none; }
QTabBar::tab {
    background: #311106; color: #f0c79e; border: 1px solid #7d3d0c; border-bottom: none; border-top-left-radius: 12px;
    border-top-right-radius: 12px; padding: 12px 18px; margin-right: 8px;
}
QTabBar::tab:selected { background: #5d280f; color: #ffb25b; }
QHeaderView::section {
    background: #311106; color: #ffb25b; border: none; border-bottom: 1px solid #7d3d0c; padding: 10px;
    font-weight: 700;
}
QTableWidget { gridline-color: #5d280f; }
QTableWidget::item { padding: 8px; }
QTableWidget::item:selected { background: #733313; color: #fff4de; }
)css";
