// The panel's window: what it shows of a tray, how it follows others, what a person does with it.
#include "drivers/virtual/reader/card_models.h"
#include "tools/panel/card_picture.h"
#include "tools/panel/catalogue.h"
#include "tools/panel/panel_window.h"
#include "tools/panel/texts.h"

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using drivers::tray::Fault;
using drivers::tray::FaultKind;
using drivers::tray::Slot;
using drivers::tray::Tray;
using drivers::tray::TrayState;
using nlohmann::json;
using tray_panel::PanelWindow;

namespace {

std::vector<Fault> oneFaultOfEachKind()
{
    const auto make = [](FaultKind kind, const char *call, std::int64_t value) {
        Fault fault;
        fault.kind = kind;
        fault.call = call;
        fault.value = value;
        fault.slot = "contact";
        fault.mask = 0x0F;
        return fault;
    };
    return {make(FaultKind::Code, "vek_beep", -5),
            make(FaultKind::Delay, "vek_icc_apdu", 250),
            make(FaultKind::Removed, "", 0),
            make(FaultKind::Short, "vek_icc_apdu", 3),
            make(FaultKind::Flipped, "vek_icc_apdu", 1),
            make(FaultKind::Unplugged, "", 0)};
}

const QStringList kEnglishFaults = {"vek_beep returns -5",
                                    "vek_icc_apdu takes 250 ms longer",
                                    "Contact slot: the card goes",
                                    "vek_icc_apdu replies with 3 bytes at most",
                                    "vek_icc_apdu replies with byte 1 XOR 0F",
                                    "the reader is unplugged"};

} // namespace

class TestTrayPanel : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void showsWhatLiesInEachSlot();
    void showsCounters();
    void offersTheCardsThatFit();
    void putsACardIn();
    void movesACardFromAnotherSlot();
    void takesACardOut();
    void aMenuOfManyCardsStaysOnTheScreen();
    void swipes();
    void hasNothingToSwipeWithoutAStripe();
    void showsAndClearsFaults();
    void tellsEveryFaultInChinese();
    void tellsWhenAFaultStrikes();
    void showsWhichFaultsAreSpent();
    void followsOthers();
    void followsChangesOfACard();
    void isDrivenByKeyboard();
    void tabsFollowTheSlots();
    void showsCardTextsAsText();
    void keepsItsSizeWhateverATitleHolds();
    void showsABrokenCard();
    void manyBrokenCardsLeaveTheTilesTheirRoom();
    void leavesBrokenCardsOutOfTheMenu();
    void showsABrokenTrayAndRecovers();
    void showsAFolderThatCannotBe();
    void survivesTheFolderBeingRemoved();
    void tellsWhyAnActionFailed();
    void speaksEnglish();
    void staysChineseElsewhere();
    void drawsEveryCardOfTheDeck();
    void helpsAndRefusesWrongUsage();

private:
    template <typename Widget>
    Widget &find(const char *name)
    {
        auto *const widget = m_window->findChild<Widget *>(name);
        if (widget == nullptr)
            qFatal("no widget %s", name);
        return *widget;
    }
    QString text(const char *name) { return find<QLabel>(name).text(); }
    QMenu &openMenu(const char *slot)
    {
        const QByteArray suffix(slot);
        QTest::mouseClick(&find<QToolButton>("toolButton_" + suffix), Qt::LeftButton);
        return find<QMenu>("menu_" + suffix);
    }
    void choose(const char *slot, const char *action)
    {
        QMenu &menu = openMenu(slot);
        auto *const chosen = menu.findChild<QAction *>(action);
        if (chosen == nullptr)
            qFatal("no action %s", action);
        chosen->trigger();
        menu.close();
    }
    std::string cardIn(Slot slot) { return m_tray->state()->at(slot).card; }
    void writeFile(const QString &name, const QByteArray &content)
    {
        QFile file(m_folder->filePath("tray/" + name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), qint64(content.size()));
    }
    void setTitle(const std::string &id, const std::string &title)
    {
        const auto held = m_tray->lock();
        json card = m_tray->card(id);
        card["title"] = title;
        m_tray->saveCard(held, id, card);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Tray> m_tray; ///< another program's view of it
    std::unique_ptr<PanelWindow> m_window;
};

void TestTrayPanel::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    const std::string folder = m_folder->filePath("tray").toStdString();
    m_tray = std::make_unique<Tray>(folder);
    m_window = std::make_unique<PanelWindow>(folder);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void TestTrayPanel::cleanup()
{
    m_window.reset();
}

void TestTrayPanel::showsWhatLiesInEachSlot()
{
    const std::pair<const char *, const char *> expected[] = {
        {"contact", "带银行账户的社保卡（张三）"},
        {"antenna", "带钱包的 M1 卡（多种访问条件）"},
        {"psam1", "PSAM 卡 1（消费）"},
        {"psam2", "PSAM 卡 2（公交）"},
        {"psam3", "PSAM 卡 3（停车）"},
        {"psam4", "PSAM 卡 4（充值）"},
        {"id", "居民身份证"},
        {"stripe", "三磁道磁条卡"},
    };
    for (const auto &[slot, title] : expected) {
        QCOMPARE(text(QByteArray("label_title_") + slot), QString(title));
        QVERIFY(!find<QToolButton>(QByteArray("toolButton_") + slot).icon().isNull());
    }
    QCOMPARE(text("label_card_psam3"), QString("psam-3"));
    QCOMPARE(text("label_folder"), m_folder->filePath("tray"));
    QVERIFY(!find<QLabel>("label_message").isVisible());
}

void TestTrayPanel::showsCounters()
{
    QCOMPARE(text("label_beeps"), QString("蜂鸣：0 次（0 ms）"));
    QCOMPARE(text("label_swipes"), QString("刷卡：0 次"));
    QCOMPARE(text("label_mode"), QString("磁条：命令模式"));
    m_tray->update([](TrayState &state) {
        state.beeps = 3;
        state.beepMs = 450;
        state.swipeCount = 2;
        state.keyboardMode = true;
    });
    QTRY_COMPARE(text("label_beeps"), QString("蜂鸣：3 次（450 ms）"));
    QCOMPARE(text("label_swipes"), QString("刷卡：2 次"));
    QCOMPARE(text("label_mode"), QString("磁条：键盘模式"));
}

void TestTrayPanel::offersTheCardsThatFit()
{
    QStringList names;
    for (const QAction *action : openMenu("antenna").actions())
        names << (action->isSeparator() ? "-" : action->objectName() + (action->isChecked() ? " *" : ""));
    const QStringList expected = {"action_contactless-bank-card",
                                  "action_file-card",
                                  "action_mifare-blank",
                                  "action_mifare-wallet *",
                                  "action_psam-1",
                                  "action_psam-2",
                                  "action_psam-3",
                                  "action_psam-4",
                                  "action_social-security-and-bank-card",
                                  "-",
                                  "action_take"};
    QCOMPARE(names, expected);
}

void TestTrayPanel::putsACardIn()
{
    choose("id", "action_id-residence-permit");
    QCOMPARE(cardIn(Slot::IdPlate), std::string("id-residence-permit"));
    QCOMPARE(text("label_card_id"), QString("id-residence-permit"));
}

void TestTrayPanel::movesACardFromAnotherSlot()
{
    choose("psam1", "action_psam-2");
    QCOMPARE(cardIn(Slot::Psam1), std::string("psam-2"));
    QCOMPARE(cardIn(Slot::Psam2), std::string());
    QCOMPARE(text("label_title_psam2"), QString("（空）"));
}

void TestTrayPanel::takesACardOut()
{
    choose("contact", "action_take");
    QCOMPARE(cardIn(Slot::Contact), std::string());
    QCOMPARE(text("label_title_contact"), QString("（空）"));
    QCOMPARE(text("label_card_contact"), QString());
    QVERIFY(!openMenu("contact").findChild<QAction *>("action_take")->isEnabled());
}

void TestTrayPanel::aMenuOfManyCardsStaysOnTheScreen()
{
    const std::string blank = m_tray->card("mifare-blank").dump();
    for (int i = 0; i < 200; ++i)
        writeFile(QString("cards/many-%1.json").arg(i, 3, 10, QChar('0')), QByteArray::fromStdString(blank));
    QMenu &menu = openMenu("antenna");
    QVERIFY(menu.actions().size() > 200);
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QVERIFY(screen.contains(menu.geometry()));
    // The last entry comes into sight from the keyboard.
    QTest::keyClick(&menu, Qt::Key_Down);
    QTest::keyClick(&menu, Qt::Key_Up);
    QCOMPARE(menu.activeAction()->objectName(), QString("action_take"));
    QVERIFY(menu.rect().contains(menu.actionGeometry(menu.activeAction())));
}

void TestTrayPanel::swipes()
{
    QTest::mouseClick(&find<QPushButton>("pushButton_swipe"), Qt::LeftButton);
    const auto state = m_tray->state();
    QCOMPARE(state->swipeCount, std::uint64_t(1));
    QCOMPARE(state->swipes.back().card, std::string("stripe-three-tracks"));
    QCOMPARE(text("label_swipes"), QString("刷卡：1 次"));
}

void TestTrayPanel::hasNothingToSwipeWithoutAStripe()
{
    QVERIFY(find<QPushButton>("pushButton_swipe").isEnabled());
    choose("stripe", "action_take");
    QVERIFY(!find<QPushButton>("pushButton_swipe").isEnabled());
}

void TestTrayPanel::showsAndClearsFaults()
{
    QVERIFY(!find<QPushButton>("pushButton_clear_faults").isEnabled());
    drivers::tray::Fault refused;
    refused.id = 2;
    refused.call = "vek_beep";
    refused.value = -5;
    drivers::tray::Fault unplugged;
    unplugged.id = 1;
    unplugged.kind = drivers::tray::FaultKind::Unplugged;
    m_tray->update([&](TrayState &state) { state.faults = {refused, unplugged}; });
    auto &list = find<QListWidget>("listWidget_faults");
    QTRY_COMPARE(list.count(), 2);
    QCOMPARE(list.item(0)->text(), QString("vek_beep 返回 -5"));
    QCOMPARE(list.item(1)->text(), QString("读卡器被拔出"));
    QTest::mouseClick(&find<QPushButton>("pushButton_clear_faults"), Qt::LeftButton);
    QCOMPARE(list.count(), 0);
    QVERIFY(m_tray->state()->faults.empty());
}

void TestTrayPanel::tellsEveryFaultInChinese()
{
    QStringList texts;
    for (const Fault &fault : oneFaultOfEachKind())
        texts << tray_panel::faultText(fault);
    const QStringList expected = {"vek_beep 返回 -5",
                                  "vek_icc_apdu 延迟 250 毫秒",
                                  "接触卡槽：卡被拔出",
                                  "vek_icc_apdu 最多应答 3 字节",
                                  "vek_icc_apdu 应答的第 1 字节异或 0F",
                                  "读卡器被拔出"};
    QCOMPARE(texts, expected);
}

void TestTrayPanel::tellsWhenAFaultStrikes()
{
    Fault fault = oneFaultOfEachKind().front();
    fault.from = 3;
    QCOMPARE(tray_panel::faultText(fault), QString("vek_beep 返回 -5（自第 3 次起）"));
    fault.times = 2;
    QCOMPARE(tray_panel::faultText(fault), QString("vek_beep 返回 -5（自第 3 次起，共 2 次）"));
    fault.seen = 4;
    QCOMPARE(tray_panel::faultText(fault), QString("vek_beep 返回 -5（自第 3 次起，共 2 次；已结束）"));
}

void TestTrayPanel::showsWhichFaultsAreSpent()
{
    Fault fault = oneFaultOfEachKind().front();
    fault.id = 1;
    fault.times = 1;
    m_tray->update([&](TrayState &state) { state.faults = {fault}; });
    auto &list = find<QListWidget>("listWidget_faults");
    QTRY_COMPARE(list.count(), 1);
    QCOMPARE(list.item(0)->text(), QString("vek_beep 返回 -5（自第 1 次起，共 1 次）"));
    m_tray->update([&](TrayState &state) { state.faults.front().seen = 1; });
    QTRY_COMPARE(list.item(0)->text(), QString("vek_beep 返回 -5（自第 1 次起，共 1 次；已结束）"));
}

void TestTrayPanel::followsOthers()
{
    m_tray->put(Slot::Contact, "file-card");
    QElapsedTimer clock;
    clock.start();
    QTRY_COMPARE(text("label_title_contact"), QString("带 PIN 的普通文件卡"));
    QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
    m_tray->update([](TrayState &state) { state.take(Slot::Contact); });
    QTRY_COMPARE(text("label_title_contact"), QString("（空）"));
    m_tray->reset();
    QTRY_COMPARE(text("label_card_contact"), QString("social-security-and-bank-card"));
}

void TestTrayPanel::followsChangesOfACard()
{
    setTitle("mifare-wallet", "Another title");
    QTRY_COMPARE(text("label_title_antenna"), QString("Another title"));
}

void TestTrayPanel::isDrivenByKeyboard()
{
    QTest::keyClick(m_window.get(), Qt::Key_7, Qt::AltModifier);
    auto &menu = find<QMenu>("menu_id");
    QTRY_VERIFY(menu.isVisible());
    QTest::keyClick(&menu, Qt::Key_Down);
    QTest::keyClick(&menu, Qt::Key_Return);
    QCOMPARE(cardIn(Slot::IdPlate), std::string("id-permanent-2017"));

    QTest::keyClick(m_window.get(), Qt::Key_S, Qt::AltModifier);
    QTRY_COMPARE(m_tray->state()->swipeCount, std::uint64_t(1));

    auto &plate = find<QToolButton>("toolButton_id");
    m_window->activateWindow(); // the menu had been the active window
    plate.setFocus();
    QTRY_VERIFY(plate.hasFocus());
    QTest::keyClick(&plate, Qt::Key_Delete);
    QTRY_COMPARE(cardIn(Slot::IdPlate), std::string());
    QTest::keyClick(&plate, Qt::Key_Delete); // nothing lies there any more
    QCOMPARE(text("label_message"), QString());

    drivers::tray::Fault unplugged;
    unplugged.id = 1;
    unplugged.kind = drivers::tray::FaultKind::Unplugged;
    m_tray->update([&](TrayState &state) { state.faults = {unplugged}; });
    QTRY_VERIFY(find<QPushButton>("pushButton_clear_faults").isEnabled());
    QTest::keyClick(m_window.get(), Qt::Key_C, Qt::AltModifier);
    QTRY_VERIFY(m_tray->state()->faults.empty());
}

void TestTrayPanel::tabsFollowTheSlots()
{
    find<QToolButton>("toolButton_contact").setFocus();
    QStringList names;
    for (int i = 0; i < 10; ++i) {
        names << m_window->focusWidget()->objectName();
        QTest::keyClick(m_window->focusWidget(), Qt::Key_Tab);
    }
    const QStringList expected = {"toolButton_contact", "toolButton_antenna", "toolButton_psam1", "toolButton_psam2",
                                  "toolButton_psam3",   "toolButton_psam4",   "toolButton_id",    "toolButton_stripe",
                                  "pushButton_swipe",   "listWidget_faults"};
    QCOMPARE(names, expected);
}

void TestTrayPanel::showsCardTextsAsText()
{
    setTitle("psam-1", "<b>bold</b> & <img src=x>\nline");
    QTRY_COMPARE(text("label_title_psam1"), QString("<b>bold</b> & <img src=x> line"));
    for (const QLabel *label : m_window->findChildren<QLabel *>())
        QCOMPARE(label->textFormat(), Qt::PlainText);
    for (const QWidget *widget : m_window->findChildren<QWidget *>())
        QCOMPARE(widget->toolTip(), QString());
    QCOMPARE(openMenu("psam1").findChild<QAction *>("action_psam-1")->text(),
             QString("<b>bold</b> && <img src=x> line  (psam-1)"));
}

void TestTrayPanel::keepsItsSizeWhateverATitleHolds()
{
    const QSize before = m_window->size();
    setTitle("psam-1", std::string(5000, 'W'));
    QTRY_VERIFY(text("label_title_psam1").startsWith("WWW"));
    QCOMPARE(text("label_title_psam1").size(), 90);
    QTest::qWait(50);
    QCOMPARE(m_window->size(), before);
}

void TestTrayPanel::showsABrokenCard()
{
    writeFile("cards/psam-4.json", "{ no card");
    QTRY_COMPARE(text("label_title_psam4"), QString("（无法读取）"));
    QVERIFY2(text("label_message").contains("psam-4.json"), qPrintable(text("label_message")));
    QCOMPARE(text("label_card_psam4"), QString("psam-4"));
    QVERIFY(QFile::remove(m_folder->filePath("tray/cards/psam-3.json")));
    QTRY_COMPARE(text("label_title_psam3"), QString("（无法读取）"));
    QVERIFY(text("label_message").contains("psam-3.json") && text("label_message").contains("psam-4.json"));
    choose("psam4", "action_psam-2");
    QVERIFY(!text("label_message").contains("psam-4.json"));
    QCOMPARE(text("label_card_psam4"), QString("psam-2"));
}

void TestTrayPanel::manyBrokenCardsLeaveTheTilesTheirRoom()
{
    for (const std::string &id : m_tray->cardIds())
        writeFile("cards/" + QString::fromStdString(id) + ".json", R"({"kind": "cpu", "atr": "not a number"})");
    const auto &message = find<QLabel>("label_message");
    QTRY_VERIFY2(message.text().endsWith("另有 6 项"), qPrintable(message.text()));
    QTRY_VERIFY(message.height() >= message.heightForWidth(message.width()));
    for (const auto *button : m_window->findChildren<QToolButton *>())
        QVERIFY2(button->height() >= button->sizeHint().height(), qPrintable(button->objectName()));
}

void TestTrayPanel::leavesBrokenCardsOutOfTheMenu()
{
    writeFile("cards/psam-4.json", "[]");
    QMenu &menu = openMenu("psam1");
    QVERIFY(menu.findChild<QAction *>("action_psam-3") != nullptr);
    QVERIFY(menu.findChild<QAction *>("action_psam-4") == nullptr);
}

void TestTrayPanel::showsABrokenTrayAndRecovers()
{
    writeFile("tray.json", R"({"slots": 7})");
    auto &message = find<QLabel>("label_message");
    QTRY_VERIFY(message.isVisible() && message.text().contains("tray.json"));
    QVERIFY(!find<QToolButton>("toolButton_contact").isEnabled());
    m_tray->reset();
    QTRY_VERIFY(!message.isVisible());
    QVERIFY(find<QToolButton>("toolButton_contact").isEnabled());
}

void TestTrayPanel::showsAFolderThatCannotBe()
{
    writeFile("file", "no folder");
    const QString place = m_folder->filePath("tray/file");
    m_window = std::make_unique<PanelWindow>(place.toStdString());
    m_window->show();
    QVERIFY2(text("label_message").contains("tray/file"), qPrintable(text("label_message")));
    QVERIFY(!find<QToolButton>("toolButton_contact").isEnabled());
    // Tried again, since somebody may put it right.
    QVERIFY(QFile::remove(place));
    QTRY_COMPARE(text("label_title_id"), QString("居民身份证"));
    QVERIFY(!find<QLabel>("label_message").isVisible());
}

void TestTrayPanel::survivesTheFolderBeingRemoved()
{
    QVERIFY(QDir(m_folder->filePath("tray")).removeRecursively());
    QTRY_VERIFY(find<QLabel>("label_message").isVisible());
    // Another program lays it out anew; the panel does not bring back what somebody has removed.
    QVERIFY(!QFile::exists(m_folder->filePath("tray")));
    m_tray = std::make_unique<Tray>(m_folder->filePath("tray").toStdString());
    QTRY_VERIFY(!find<QLabel>("label_message").isVisible());
    choose("contact", "action_take");
    QCOMPARE(text("label_title_contact"), QString("（空）"));
}

void TestTrayPanel::tellsWhyAnActionFailed()
{
    QMenu &menu = openMenu("contact");
    QVERIFY(QFile::remove(m_folder->filePath("tray/cards/file-card.json")));
    menu.findChild<QAction *>("action_file-card")->trigger();
    auto &message = find<QLabel>("label_message");
    QVERIFY(message.isVisible());
    QVERIFY2(message.text().contains("file-card.json"), qPrintable(message.text()));
    menu.close();
    // The next action that succeeds takes the message away.
    choose("contact", "action_take");
    QVERIFY(!message.isVisible());
}

void TestTrayPanel::speaksEnglish()
{
    QTranslator english;
    QVERIFY(english.load(":/panel/panel_en.qm"));
    QCoreApplication::installTranslator(&english);
    m_window = std::make_unique<PanelWindow>(m_folder->filePath("tray").toStdString());
    choose("contact", "action_take");
    QStringList texts = {m_window->windowTitle(), find<QListWidget>("listWidget_faults").accessibleName()};
    for (const QLabel *label : m_window->findChildren<QLabel *>())
        texts << label->text();
    for (const QAbstractButton *button : m_window->findChildren<QAbstractButton *>())
        texts << button->text();
    for (const QAction *action : openMenu("contact").actions())
        texts << action->text();
    for (const Fault &fault : oneFaultOfEachKind())
        texts << tray_panel::faultText(fault);
    QCOMPARE(texts.mid(texts.size() - 6), kEnglishFaults);
    Fault passing = oneFaultOfEachKind().front();
    passing.from = 3;
    texts << tray_panel::faultText(passing);
    passing.times = 1;
    texts << tray_panel::faultText(passing);
    passing.seen = 3;
    texts << tray_panel::faultText(passing);
    QCOMPARE(texts.mid(texts.size() - 3),
             (QStringList{"vek_beep returns -5 (from 3)", "vek_beep returns -5 (from 3, times: 1)",
                          "vek_beep returns -5 (from 3, times: 1; spent)"}));
    m_tray->update([](TrayState &state) { state.keyboardMode = true; });
    QTRY_COMPARE(text("label_mode"), QString("Stripe: keyboard mode"));
    QCoreApplication::removeTranslator(&english);
    for (const QString &shown : qAsConst(texts)) {
        for (const QChar c : shown)
            QVERIFY2(c.script() != QChar::Script_Han, qPrintable(shown));
    }
    QCOMPARE(texts.first(), QString("Virtual reader"));
    QVERIFY(texts.contains("(empty)"));
    QVERIFY(texts.contains("&Take out"));
    QVERIFY(texts.contains("&1 Contact slot"));
    QVERIFY(texts.contains("Resident ID card"));
}

void TestTrayPanel::staysChineseElsewhere()
{
    for (const char *name : {"C", "zh_CN", "de_DE"}) {
        tray_panel::installCatalogue(QLocale(name));
        QCOMPARE(QCoreApplication::translate("tray_panel::PanelWindow", "虚拟读卡器"), QString("虚拟读卡器"));
    }
}

void TestTrayPanel::drawsEveryCardOfTheDeck()
{
    for (const std::string &id : m_tray->cardIds()) {
        const QImage picture = tray_panel::cardPicture(m_tray->card(id));
        QCOMPARE(picture.size(), QSize(tray_panel::kCardWidth, tray_panel::kCardHeight));
        QVERIFY2(picture != tray_panel::brokenCardPicture(), id.c_str());
    }
    QVERIFY(tray_panel::cardPicture(m_tray->card("psam-1")) != tray_panel::cardPicture(m_tray->card("file-card")));
    QVERIFY(tray_panel::cardPicture(m_tray->card("id-resident")) !=
            tray_panel::cardPicture(m_tray->card("id-permanent-2017")));
    for (const Slot slot : drivers::tray::kAllSlots)
        QCOMPARE(tray_panel::emptySlotPicture(slot).width(), tray_panel::kCardWidth);
}

void TestTrayPanel::helpsAndRefusesWrongUsage()
{
    QProcess panel;
    panel.start(UNIFOLD_TRAY_PANEL, {"--help"});
    QVERIFY(panel.waitForFinished());
    QCOMPARE(panel.exitCode(), 0);
    const QByteArray help = panel.readAllStandardOutput();
    QVERIFY(help.contains("--tray DIR"));
    QVERIFY(help.contains("--geometry SPEC"));
    panel.start(UNIFOLD_TRAY_PANEL, {"--juggle"});
    QVERIFY(panel.waitForFinished());
    QCOMPARE(panel.exitCode(), 2);
}

QTEST_MAIN(TestTrayPanel)
#include "test_tray_panel.moc"
