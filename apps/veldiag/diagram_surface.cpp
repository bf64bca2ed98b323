#include "diagram_surface.h"

#include <velDiagEdit/platform/dialog_service.h>

#include <QCoreApplication>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QPalette>

namespace veldiag {

namespace {

// The container speaks to the user through the dialog service; the tool has nobody to ask, so
// it keeps the messages and answers every question with Cancel.
class MessageRecorder : public vde::IDialogService {
public:
    using IDialogService::EditSizeValue;
    using IDialogService::MessageDlg;
    QStringList Messages;

    bool EditSegmentParams(vde::TSegmentParamRec&, const QString&, vde::TPoint) override {
        return false;
    }
    bool EditSizeValue(vde::TSizeParamRec&, const QString&, vde::TPoint) override { return false; }
    int SelectItemFromArray(const QString&, const QStringList&, int) override { return -1; }
    bool InputQuery(const QString&, const QString&, QString&) override { return false; }
    QString InputBox(const QString&, const QString&, const QString& ADefault) override {
        return ADefault;
    }
    void ShowMessage(const QString& Msg) override { Messages << Msg; }
    vde::TModalResult MessageDlg(const QString& Msg, vde::TMsgDlgType, vde::TMsgDlgButtons, int,
                                 vde::TMsgDlgBtn) override {
        Messages << Msg;
        return vde::mrCancel;
    }
    vde::TModalResult ErrorMessageDlg(const QString& Msg) override {
        Messages << Msg;
        return vde::mrOk;
    }
    bool QueryMessageDlg(const QString& Msg, const QString&) override {
        Messages << Msg;
        return false;
    }
    bool ExecuteOpenDialog(vde::TFileDialog&) override { return false; }
    bool ExecuteSaveDialog(vde::TFileDialog&) override { return false; }
};

QByteArray ReadWholeFile(const QString& fileName) {
    QFile f(fileName);
    if (!f.open(QIODevice::ReadOnly))
        throw vde::EFOpenError(
            QStringLiteral("Cannot open file \"%1\": %2").arg(fileName, f.errorString()));
    QByteArray bytes = f.readAll();
    if (f.error() != QFileDevice::NoError)
        throw vde::EReadError(
            QStringLiteral("Cannot read file \"%1\": %2").arg(fileName, f.errorString()));
    return bytes;
}

vde::TMemoryStream StreamOf(const QByteArray& bytes) {
    return vde::TMemoryStream(std::vector<uint8_t>(bytes.begin(), bytes.end()));
}

// Every new widget asks to be polished with a posted event, and every widget that goes scans the
// posted events for its own: with ten thousand blocks made and later freed that is quadratic.
// The panel is never shown and blocks draw without the style, so the requests are dropped.
void DropPolishRequests() {
    QCoreApplication::removePostedEvents(nullptr, QEvent::PolishRequest);
}

} // namespace

DiagramForm FormByExtension(const QString& fileName) {
    const QString ext = QFileInfo(fileName).suffix().toLower();
    return ext == QLatin1String("ini") || ext == QLatin1String("txt") ? DiagramForm::Text
                                                                      : DiagramForm::Binary;
}

DiagramSurface::DiagramSurface() {
    FPanel = std::make_unique<QWidget>();
    FPanel->setObjectName(QStringLiteral("DiagramPanel"));
    QPalette pal = FPanel->palette();
    pal.setColor(QPalette::Window, Qt::white);
    FPanel->setPalette(pal);
    FPanel->setAutoFillBackground(true);
    FCanvas = std::make_unique<vde::TCanvas>();
    FCanvas->SetHandle(FPanel.get());
    FContainer = std::make_unique<vde::TDiagContainer>(FPanel.get(), FCanvas.get(), nullptr);
}

DiagramSurface::~DiagramSurface() {
    // The container unhooks itself from the panel and frees its blocks before the panel goes.
    FContainer.reset();
    FCanvas.reset();
    FPanel.reset();
}

void DiagramSurface::LoadBinaryOnce(const QByteArray& bytes) {
    MessageRecorder recorder;
    const vde::TScopedDialogService scope(&recorder);
    vde::TMemoryStream stream = StreamOf(bytes);
    FContainer->LoadFromStream(stream);
    DropPolishRequests();
    if (!recorder.Messages.isEmpty())
        throw vde::EFormatError(recorder.Messages.join(QStringLiteral("; ")), 0);
}

QStringList DiagramSurface::ControlNames(const QByteArray& bytes) {
    QStringList names;
    try {
        vde::TMemoryStream s = StreamOf(bytes);
        s.SetPosition(4);
        const int32_t blockCount = s.ReadInt32();
        QWidget scratch;
        vde::TDiagObjectList blocks(&scratch);
        blocks.LoadFromStream(s, {}, blockCount);
        const int32_t connectionCount = s.ReadInt32();
        vde::TDiagConnectList connections(static_cast<vde::TCanvas*>(nullptr));
        connections.LoadFromStream(s, {}, connectionCount);
        // Each entry: the name, then the bounds as four Ints.
        const int32_t n = s.ReadCount("Control count", 4);
        for (int32_t i = 0; i < n; ++i) {
            names << s.ReadStr();
            for (int k = 0; k < 4; ++k)
                s.ReadInt32();
        }
    } catch (const vde::Exception&) {
        // The reload names the error, if any.
    }
    return names;
}

void DiagramSurface::LoadBinary(const QByteArray& bytes) {
    if (bytes.size() <= 4)
        throw vde::EFormatError(
            QStringLiteral("%1 bytes are too few to hold a diagram").arg(bytes.size()), 0);
    std::exception_ptr first;
    try {
        LoadBinaryOnce(bytes);
        if (FContainer->CntList->Warnings().isEmpty())
            return;
    } catch (const vde::Exception&) {
        first = std::current_exception();
    }
    // Either the stream holds foreign controls this surface has none of, or it is bad. With a
    // stand-in for every stored name the controls read as their writer wrote them.
    const QStringList names = ControlNames(bytes);
    bool added = false;
    for (const QString& name : names) {
        if (FContainer->CntList->FindControl(name))
            continue;
        auto* w = new QWidget(FPanel.get());
        w->setObjectName(name);
        FContainer->CntList->Add(w);
        FStandIns.push_back(w);
        added = true;
    }
    if (!added) {
        if (first)
            std::rethrow_exception(first);
        return;
    }
    LoadBinaryOnce(bytes);
}

void DiagramSurface::LoadFile(const QString& fileName, DiagramForm form) {
    if (form == DiagramForm::Binary) {
        LoadBinary(ReadWholeFile(fileName));
        return;
    }
    // The text reader takes a missing file for an empty one; a tool says so instead.
    if (!QFileInfo(fileName).isFile())
        throw vde::EFOpenError(
            QStringLiteral("Cannot open file \"%1\": no such file").arg(fileName));
    FContainer->LoadDiagramFromText(fileName);
    DropPolishRequests();
}

QByteArray DiagramSurface::SaveBinary() {
    vde::TMemoryStream s;
    FContainer->SaveToStream(s);
    return QByteArray(reinterpret_cast<const char*>(s.Memory()), qsizetype(s.Bytes().size()));
}

void DiagramSurface::ClearSelection() {
    vde::TDiagContainer& dc = *FContainer;
    if (dc.ObjList)
        dc.ObjList->DeselectAll(nullptr);
    if (dc.ConList)
        for (int i = 0; i < dc.ConList->Count(); ++i)
            if (vde::TDiagConnection* c = dc.ConList->Items(i))
                c->SetSelectedIndex(-1);
    dc.SelObj = nullptr;
    dc.SelInfo = vde::LongRec{};
}

std::vector<StoredControl> DiagramSurface::Controls() const {
    std::vector<StoredControl> out;
    for (QWidget* w : FStandIns) {
        const QRect g = w->geometry();
        out.push_back({w->objectName(),
                       vde::TRect{g.left(), g.top(), g.left() + g.width(), g.top() + g.height()}});
    }
    return out;
}

} // namespace veldiag
