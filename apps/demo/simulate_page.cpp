// Demo page: simulating a diagram of examples/. Pick a diagram; each of its sources gets a
// waveform field (filled from <name>.stimuli.json beside it when there is one). Run plays the
// steps one after another, Step does one, Reset goes back to step 0 with the waveforms as they
// are written. The wires show the value of their net (the container's live view), and the timing
// chart beside the diagram grows with every step. What the simulator finds wrong is listed
// below.
#include "demo_pages.h"

#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/editor/simulation_chart.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/simulation/diag_simulator.h"
#include "velDiagEdit/simulation/stimuli.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QSplitter>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <memory>
#include <vector>

namespace {

// The examples folder: VDE_EXAMPLES_DIR if set, else the nearest "examples" folder above the
// program (the build tree lives inside the source tree), else the one the build was made from.
QString ExamplesFolder() {
    const QString env = qEnvironmentVariable("VDE_EXAMPLES_DIR");
    if (!env.isEmpty())
        return env;
    QDir dir(QCoreApplication::applicationDirPath());
    for (int up = 0; up < 6; ++up) {
        if (QFileInfo::exists(dir.filePath(QStringLiteral("examples/half_adder.dgm"))))
            return dir.filePath(QStringLiteral("examples"));
        if (!dir.cdUp())
            break;
    }
    return QStringLiteral(VDE_EXAMPLES_DIR);
}

// The timing chart of the simulator's record so far, drawn at the step width that the whole
// run will have, so that it grows to the right without being squeezed.
class ChartView : public QWidget {
public:
    void Show(const vde::TDiagSimulator* sim, int64_t plannedSteps) {
        FSim = sim;
        FOptions.StepWidth =
            int(std::clamp<int64_t>(800 / std::max<int64_t>(plannedSteps, 1), 2, 16));
        FFullWidth = 200;
        if (FSim) {
            vde::TSimRecord whole = FSim->Record();
            whole.Steps = plannedSteps;
            try {
                FFullWidth = vde::SimChartSize(whole, FOptions).width();
            } catch (const vde::Exception&) {
            }
        }
        Changed();
    }
    // How wide the chart of the whole run will be.
    int FullWidth() const { return FFullWidth; }
    void Changed() {
        QSize size(200, 100);
        if (FSim) {
            try {
                size = vde::SimChartSize(FSim->Record(), FOptions);
            } catch (const vde::Exception&) {
            }
        }
        setFixedSize(size);
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        p.fillRect(rect(), Qt::white);
        if (!FSim)
            return;
        try {
            vde::PaintSimChart(p, this, FSim->Record(), FOptions);
        } catch (const vde::Exception& e) {
            p.drawText(rect(), Qt::AlignCenter, e.Message());
        }
    }

private:
    const vde::TDiagSimulator* FSim = nullptr;
    vde::TSimChartOptions FOptions;
    int FFullWidth = 200;
};

class SimulatePage : public QWidget {
public:
    SimulatePage() {
        setObjectName(QStringLiteral("simulatePage"));
        auto* layout = new QVBoxLayout(this);

        auto* row = new QHBoxLayout;
        FChoice = new QComboBox;
        FChoice->setObjectName(QStringLiteral("simDiagram"));
        FSteps = new QSpinBox;
        FSteps->setObjectName(QStringLiteral("simSteps"));
        FSteps->setRange(1, int(vde::kMaxSimChartSteps));
        FRun = new QPushButton(QStringLiteral("Run"));
        FRun->setObjectName(QStringLiteral("simRun"));
        auto* step = new QPushButton(QStringLiteral("Step"));
        step->setObjectName(QStringLiteral("simStep"));
        auto* reset = new QPushButton(QStringLiteral("Reset"));
        reset->setObjectName(QStringLiteral("simReset"));
        FTime = new QLabel;
        FTime->setObjectName(QStringLiteral("simTime"));
        row->addWidget(new QLabel(QStringLiteral("Diagram:")));
        row->addWidget(FChoice);
        row->addWidget(new QLabel(QStringLiteral("Steps:")));
        row->addWidget(FSteps);
        row->addWidget(FRun);
        row->addWidget(step);
        row->addWidget(reset);
        row->addWidget(FTime, 1);
        layout->addLayout(row);

        // Left: the waveforms and the diagram; right: the chart.
        auto* split = new QSplitter(Qt::Horizontal);
        auto* left = new QWidget;
        auto* leftLayout = new QVBoxLayout(left);
        leftLayout->setContentsMargins(0, 0, 0, 0);
        FStimuliBox = new QGroupBox(QStringLiteral("Stimuli (bits \"0011\", \"clock 4\", or "
                                                   "changes \"0, 1@8\")"));
        FStimuliForm = new QFormLayout(FStimuliBox);
        leftLayout->addWidget(FStimuliBox);
        FSurface = new QFrame;
        FSurface->setObjectName(QStringLiteral("simSurface"));
        FSurface->setAutoFillBackground(true);
        QPalette pal = FSurface->palette();
        pal.setColor(QPalette::Window, Qt::white);
        FSurface->setPalette(pal);
        auto* surfaceScroll = new QScrollArea;
        surfaceScroll->setWidget(FSurface);
        leftLayout->addWidget(surfaceScroll, 1);
        split->addWidget(left);
        FChart = new ChartView;
        FChart->setObjectName(QStringLiteral("simChart"));
        FChartScroll = new QScrollArea;
        FChartScroll->setWidget(FChart);
        FChartScroll->setBackgroundRole(QPalette::Base);
        split->addWidget(FChartScroll);
        split->setStretchFactor(0, 3);
        split->setStretchFactor(1, 2);
        layout->addWidget(split, 1);

        FIssues = new QPlainTextEdit;
        FIssues->setObjectName(QStringLiteral("simIssues"));
        FIssues->setReadOnly(true);
        FIssues->setMaximumHeight(90);
        layout->addWidget(FIssues);

        FCanvas.SetHandle(FSurface);
        FDiagram = std::make_unique<vde::TDiagContainer>(FSurface, &FCanvas, nullptr);

        FFolder = ExamplesFolder();
        for (const QFileInfo& f :
             QDir(FFolder).entryInfoList({QStringLiteral("*.dgm")}, QDir::Files, QDir::Name))
            FChoice->addItem(f.completeBaseName(), f.filePath());
        FTimer.setInterval(60);
        connect(&FTimer, &QTimer::timeout, this, [this] { Tick(); });
        connect(FChoice, &QComboBox::currentIndexChanged, this, [this] { Load(); });
        connect(FRun, &QPushButton::clicked, this, [this] { RunOrPause(); });
        connect(step, &QPushButton::clicked, this, [this] {
            Pause();
            StepOnce();
        });
        connect(reset, &QPushButton::clicked, this, [this] {
            Pause();
            Restart();
        });
        const int first = FChoice->findText(QStringLiteral("half_adder"));
        if (first > 0)
            FChoice->setCurrentIndex(first); // loads it
        else
            Load();
    }

    ~SimulatePage() override {
        FTimer.stop();
        if (FDiagram)
            FDiagram->SetLiveSimulator(nullptr);
    }

    // Runs the whole planned run at once (for the offscreen picture).
    void RunToEnd() {
        Pause();
        if (FSim && FSim->Time() > 0)
            Restart();
        while (FSim && FSim->Time() < FSteps->value())
            StepOnce();
    }

private:
    void Load() {
        Pause();
        FDiagram->SetLiveSimulator(nullptr);
        FChart->Show(nullptr, 1);
        FSim.reset();
        const QString file = FChoice->currentData().toString();
        if (file.isEmpty()) {
            FTime->setText(QStringLiteral("No examples folder found (set VDE_EXAMPLES_DIR)."));
            return;
        }
        try {
            FDiagram->LoadDiagramFromFile(file);
        } catch (const vde::Exception& e) {
            FTime->setText(e.Message());
            return;
        }
        FitSurface();
        FSim = std::make_unique<vde::TDiagSimulator>(*FDiagram->ObjList, *FDiagram->ConList);
        connect(FSim.get(), &vde::TDiagSimulator::Stepped, this, [this] { ShowProgress(); });

        // The stimuli file beside the diagram fills the fields and the number of steps.
        vde::TSimStimuli given;
        QString stimuliProblem;
        const QString stimuliFile = QFileInfo(file).path() + QLatin1Char('/') +
                                    QFileInfo(file).completeBaseName() +
                                    QStringLiteral(".stimuli.json");
        if (QFileInfo::exists(stimuliFile)) {
            try {
                given = vde::TSimStimuli::LoadFromFile(stimuliFile);
            } catch (const vde::Exception& e) {
                stimuliProblem =
                    QFileInfo(stimuliFile).fileName() + QStringLiteral(": ") + e.Message();
            }
        }
        FSteps->setValue(int(
            std::clamp<int64_t>(given.Steps > 0 ? given.Steps : 32, 1, vde::kMaxSimChartSteps)));
        while (FStimuliForm->rowCount() > 0)
            FStimuliForm->removeRow(0);
        FFields.clear();
        for (const QString& name : FSim->SourceNames()) {
            auto* field = new QLineEdit;
            field->setObjectName(QStringLiteral("stimulus_") + name);
            const auto it = given.Signals.find(name);
            field->setText(it != given.Signals.end() ? it->second.Text() : QStringLiteral("0"));
            connect(field, &QLineEdit::textEdited, this, [this] { FStimuliChanged = true; });
            FStimuliForm->addRow(name + QLatin1Char(':'), field);
            FFields.push_back({name, field});
        }
        FStimuliBox->setVisible(!FFields.empty());
        FDiagram->SetLiveSimulator(FSim.get());
        FLoadProblem = stimuliProblem;
        Restart();
    }

    // The surface as large as the diagram's blocks and wires reach, plus a margin.
    void FitSurface() {
        int right = 300, bottom = 200;
        for (int i = 0; i < FDiagram->ObjList->Count(); ++i) {
            const vde::TRect r = FDiagram->ObjList->Items(i)->BoundsRect();
            right = std::max(right, r.Right);
            bottom = std::max(bottom, r.Bottom);
        }
        for (int i = 0; i < FDiagram->ConList->Count(); ++i)
            for (const vde::TPoint& p : FDiagram->ConList->Items(i)->FPoints) {
                right = std::max(right, p.X);
                bottom = std::max(bottom, p.Y);
            }
        FSurface->resize(std::min(right + 20, 4000), std::min(bottom + 20, 4000));
    }

    // Reads the fields into the simulator and goes back to step 0; false when a field cannot be
    // read (it is marked, and the simulator keeps what it had).
    bool Restart() {
        if (!FSim)
            return false;
        std::vector<std::pair<QString, vde::TSimWaveform>> waves;
        for (const Field& f : FFields) {
            try {
                waves.emplace_back(f.Name, vde::TSimWaveform::Parse(f.Edit->text()));
                f.Edit->setStyleSheet(QString());
                f.Edit->setToolTip(QString());
            } catch (const vde::EStimulusError& e) {
                f.Edit->setStyleSheet(QStringLiteral("background: #ffd0d0"));
                f.Edit->setToolTip(e.Message());
                FTime->setText(f.Name + QStringLiteral(": ") + e.Message());
                return false;
            }
        }
        FSim->ClearStimuli();
        for (const auto& [name, wave] : waves)
            FSim->SetStimulus(name, wave);
        FSim->Reset();
        FStimuliChanged = false;
        FChart->Show(FSim.get(), FSteps->value());
        // Room for the whole chart beside the diagram, as far as the window allows.
        FChartScroll->setMinimumWidth(std::min(FChart->FullWidth() + 24, 640));
        ShowProgress();
        ShowIssues();
        return true;
    }

    void StepOnce() {
        if (!FSim || (FStimuliChanged && !Restart()))
            return;
        FSim->Step();
    }

    void RunOrPause() {
        if (FTimer.isActive()) {
            Pause();
            return;
        }
        if (!FSim || (FStimuliChanged && !Restart()))
            return;
        if (FSim->Time() >= FSteps->value() && !Restart())
            return;
        FTimer.start();
        FRun->setText(QStringLiteral("Pause"));
    }

    void Pause() {
        FTimer.stop();
        FRun->setText(QStringLiteral("Run"));
    }

    void Tick() {
        if (!FSim || FSim->Time() >= FSteps->value()) {
            Pause();
            return;
        }
        FSim->Step();
        if (FSim->Time() >= FSteps->value())
            Pause();
    }

    void ShowProgress() {
        if (!FSim)
            return;
        FChart->Changed();
        QString text = QStringLiteral("step %1 of %2").arg(FSim->Time()).arg(FSteps->value());
        if (FSim->ForbiddenCount() > 0)
            text += QStringLiteral(", forbidden input %1 times").arg(FSim->ForbiddenCount());
        FTime->setText(text);
        // Oscillation and forbidden inputs are found as the run goes.
        if (FSim->Issues().size() != FShownIssues)
            ShowIssues();
    }

    void ShowIssues() {
        QStringList lines;
        if (!FLoadProblem.isEmpty())
            lines << FLoadProblem;
        const std::vector<vde::TSimIssue> issues = FSim->Issues();
        FShownIssues = issues.size();
        for (const vde::TSimIssue& i : issues)
            lines << (i.IsError ? QStringLiteral("Error: ") : QStringLiteral("Warning: ")) +
                         i.Message;
        FIssues->setPlainText(lines.isEmpty() ? QStringLiteral("No errors or warnings.")
                                              : lines.join(QLatin1Char('\n')));
    }

    struct Field {
        QString Name;
        QLineEdit* Edit;
    };

    QString FFolder;
    QComboBox* FChoice = nullptr;
    QSpinBox* FSteps = nullptr;
    QPushButton* FRun = nullptr;
    QLabel* FTime = nullptr;
    QGroupBox* FStimuliBox = nullptr;
    QFormLayout* FStimuliForm = nullptr;
    QFrame* FSurface = nullptr;
    ChartView* FChart = nullptr;
    QScrollArea* FChartScroll = nullptr;
    QPlainTextEdit* FIssues = nullptr;
    std::vector<Field> FFields;
    bool FStimuliChanged = false;
    size_t FShownIssues = 0;
    QString FLoadProblem;
    QTimer FTimer;
    vde::TCanvas FCanvas;
    // Made from the container's lists when a diagram is loaded; outlives the container's view of
    // it (the page's destructor switches the view off first).
    std::unique_ptr<vde::TDiagSimulator> FSim;
    // Declared last: goes first, while the surface still exists.
    std::unique_ptr<vde::TDiagContainer> FDiagram;
};

const bool registered = RegisterDemoPage(
    60, QStringLiteral("Simulate"), [] { return new SimulatePage; },
    [](QWidget* page) { static_cast<SimulatePage*>(page)->RunToEnd(); });

} // namespace
