#include "DisplayFixture.h"

#include <QContextMenuEvent>

static void initPictures() {
    Q_INIT_RESOURCE(tavorin);
}

DisplayFixture::DisplayFixture() {
    initPictures();
    m_window.resize(700, 560);
}

DisplayFixture::~DisplayFixture() {
    CloseDisplay();
    m_camera = nullptr;
    m_interface = nullptr;
}

void DisplayFixture::Open(const std::string& keys) {
    AddInterface();
    AddCamera("1001", keys);
    Start();
    m_camera = Find("1001");
    ASSERT_TRUE(m_camera.IsValid());
    m_interface = m_system->GetInterfaces(false).GetByIndex(0);
    m_display = new wImageDisplay(m_interface, m_camera, &m_window);
    m_window.addDockWidget(Qt::RightDockWidgetArea, m_display);
    m_window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_window));
}

void DisplayFixture::CloseDisplay() {
    delete m_display;
}

QMenu* DisplayFixture::OpenMenu() const {
    const QPoint place(20, 20);
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, m_display->mapToGlobal(place));
    QApplication::sendEvent(m_display, &event);
    return m_display->getContextMenu();
}

QAction* DisplayFixture::Entry(QMenu* menu, const QString& text) const {
    for (QAction* action : menu->findChildren<QAction*>()) {
        if (action->text() == text) {
            return action;
        }
    }
    return nullptr;
}

void DisplayFixture::Choose(const QString& text) const {
    QMenu* menu = OpenMenu();
    ASSERT_TRUE(menu);
    QAction* entry = Entry(menu, text);
    ASSERT_TRUE(entry) << text.toStdString();
    entry->trigger();
    menu->close();
}

void DisplayFixture::StreamUntilShown() {
    Click("actionStartStream");
    ASSERT_SOON(Gl()->getPaintRate() > 0.1 && Gl()->getRawImage().IsValid());
}
