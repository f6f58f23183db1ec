// The table test of a page's widgets: each object name once, with its class and its text at start.
#pragma once

#include <QString>
#include <QTest>
#include <QWidget>

struct WidgetRow {
    const char *name;
    const char *className;
    const char *text; ///< title of a group box, choice of a combo box
};

/// The rows of the test, named after the widgets.
template <std::size_t count>
void addWidgetRows(const WidgetRow (&rows)[count])
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("text");
    for (const WidgetRow &row : rows)
        QTest::newRow(row.name) << row.className << row.text;
}

inline const char *textProperty(const QString &className)
{
    if (className == "QGroupBox")
        return "title";
    if (className == "QComboBox")
        return "currentText";
    return className == "QTextEdit" ? "plainText" : "text";
}

/// The test of one row.
inline void compareWidget(const QWidget *page)
{
    QFETCH(QString, className);
    QFETCH(QString, text);
    const auto found = page->findChildren<QWidget *>(QTest::currentDataTag());
    QCOMPARE(found.size(), 1);
    QCOMPARE(QString(found.first()->metaObject()->className()), className);
    QCOMPARE(found.first()->property(textProperty(className)).toString(), text);
}
