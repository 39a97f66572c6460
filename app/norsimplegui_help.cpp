// The main window's menus, and what the Help menu opens.
#include "norsimplegui_qt.h"

#include "ProductData.h"
#include "ui_norsimplegui_qt.h"
#include "wSurveyDialog.h"

#include <QAction>
#include <QDate>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMessageBox>
#include <QUrl>

namespace {

// The library release that this program's documentation and About box speak of; the window's title shows the
// version that runs.
constexpr int kDocumentedVersion[] = {2, 6, 0, 160};

QString rightsNotice() {
    return QString::fromUtf8(kRightsNotice).arg(QDate::currentDate().year());
}

template <class Slot>
void addEntry(QMenu* menu, NorSimpleGUI_QT* window, const QString& text, const QString& toolTip, Slot slot) {
    QAction* action = menu->addAction(text, window, slot);
    action->setShortcut(QKeySequence());
    action->setToolTip(toolTip);
}

} // namespace

void NorSimpleGUI_QT::SetupMenuBar() {
    m_ui->menuFile->setToolTipsVisible(true);
    addEntry(m_ui->menuFile, this, tr("&Reset Application Settings"),
             tr("Resets the Application settings but does not load them"),
             &NorSimpleGUI_QT::ResetApplicationSettings);
    addEntry(m_ui->menuFile, this, tr("&Exit"), tr("Exits the application"), &NorSimpleGUI_QT::close);

    m_ui->menuHelp->setToolTipsVisible(true);
    SetupDocumentationMenu();
    addEntry(m_ui->menuHelp, this, tr("&Give Feedback"), tr("Give feedback on your experience with Tavorin"),
             &NorSimpleGUI_QT::Survey);
    addEntry(m_ui->menuHelp, this, tr("&Contact Support"),
             tr("Launch the technical support page in a browser"), &NorSimpleGUI_QT::Support);
    addEntry(m_ui->menuHelp, this, tr("&About"), tr("Show the application's About box"),
             &NorSimpleGUI_QT::About);
    addEntry(m_ui->menuHelp, this, tr("&License"), tr("Show the application's license information"),
             &NorSimpleGUI_QT::License);
}

void NorSimpleGUI_QT::SetupDocumentationMenu() {
    const QString folder = GetDocsInstallDir();
    m_docC = folder + QStringLiteral("/Norvane C API Reference.pdf");
    m_docCpp = folder + QStringLiteral("/Norvane C++ API Reference.pdf");
    m_docProgrammerGuide = folder + QStringLiteral("/html/C-Plus-Plus-ProgrammerGuide.html");
    m_docFeature = folder + QStringLiteral("/html/00-Sablecap-Comparison.html");
    m_docTavorin = folder + QStringLiteral("/html/Tavorin-Getting-Started.html");
    m_docCameraGettingStarted = folder + QStringLiteral("/Altrona Camera Getting Started.html");

    QMenu* menu = m_ui->menuHelp->addMenu(tr("Documentation"));
    menu->setToolTipsVisible(true);
    const auto addDocument = [&](const QString& path, const QString& text, const QString& toolTip,
                                 void (NorSimpleGUI_QT::*slot)() const) {
        if (QFileInfo::exists(path)) {
            addEntry(menu, this, text, toolTip, slot);
        }
    };
    addDocument(m_docC, tr("&Norvane C API Documentation"), tr("Show Norvane C API documentation"),
                &NorSimpleGUI_QT::DocC);
    addDocument(m_docCpp, tr("&Norvane C++ API Documentation"), tr("Show Norvane C++ API documentation"),
                &NorSimpleGUI_QT::DocCPP);
    menu->addSeparator();
    addDocument(m_docProgrammerGuide, tr("&Norvane Programmer's Guide"),
                tr("Show Norvane Programmer's Guide"), &NorSimpleGUI_QT::DocProgrammerGuide);
    addDocument(m_docFeature, tr("&Sablecap2/Norvane Feature Comparisons"),
                tr("Show Sablecap2/Norvane Feature Comparisons"), &NorSimpleGUI_QT::DocFeature);
    addDocument(m_docTavorin, tr("&Tavorin Getting Started"), tr("Show Tavorin Getting Started Guide"),
                &NorSimpleGUI_QT::DocTavorin);
    addDocument(m_docCameraGettingStarted, tr("&Altrona Camera Getting Started"),
                tr("Show Altrona Camera Getting Started Guide"), &NorSimpleGUI_QT::DocCameraGettingStarted);
}

QString NorSimpleGUI_QT::GetDocsInstallDir() {
    return QString::fromUtf8(kDocsInstallDir);
}

void NorSimpleGUI_QT::OpenDoc(const QString& path) {
    if (QFileInfo::exists(path)) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
    }
}

void NorSimpleGUI_QT::DocC() const {
    OpenDoc(m_docC);
}

void NorSimpleGUI_QT::DocCPP() const {
    OpenDoc(m_docCpp);
}

void NorSimpleGUI_QT::DocProgrammerGuide() const {
    OpenDoc(m_docProgrammerGuide);
}

void NorSimpleGUI_QT::DocFeature() const {
    OpenDoc(m_docFeature);
}

void NorSimpleGUI_QT::DocTavorin() const {
    OpenDoc(m_docTavorin);
}

void NorSimpleGUI_QT::DocCameraGettingStarted() const {
    OpenDoc(m_docCameraGettingStarted);
}

void NorSimpleGUI_QT::Survey() const {
    m_surveyDialog->SetDoNotAskCheckBoxVisible(false);
    m_surveyDialog->show();
}

void NorSimpleGUI_QT::Support() const {
    QDesktopServices::openUrl(QUrl(QString::fromUtf8(kSupportUrl)));
}

void NorSimpleGUI_QT::About() {
    const QString product = QString::asprintf(
        "Norvane %d.%d.%d.%d\n\nViewer application for Norvane Library.\n\n", kDocumentedVersion[0],
        kDocumentedVersion[1], kDocumentedVersion[2], kDocumentedVersion[3]);
    QMessageBox::about(this, tr("About Tavorin"), product + rightsNotice());
}

void NorSimpleGUI_QT::License() {
    QMessageBox::about(this, QStringLiteral("License"),
                       QString::fromUtf8(kLicenseText) + QLatin1Char('\n') + rightsNotice());
}
