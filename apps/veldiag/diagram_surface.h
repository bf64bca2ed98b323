#pragma once
// A diagram loaded the way a host loads it: a plain panel that is never shown, the canvas its
// wires are drawn with, and a diagram container on it, outside design mode.
//
// Loading raises the library's typed errors. Two outcomes the library reports in other ways
// become errors here as well, so that no command goes on with a diagram that did not load: a
// source of four bytes or fewer (which the container silently ignores) and a stream without the
// signature (which the container reports through its message dialog, "Invalid file format").
//
// Foreign controls: a binary diagram stores the names and bounds of the host's own widgets,
// and the container puts the bounds back on widgets of those names. The tool has no host
// widgets, so when the stream holds such entries it makes an invisible stand-in widget for each
// name and loads again; the stand-ins then carry the stored bounds (Controls()).

#include <velDiagEdit/velDiagEdit.h>

#include <QByteArray>
#include <QString>
#include <QWidget>
#include <memory>
#include <vector>

namespace veldiag {

// The stored form of a diagram file.
enum class DiagramForm { Binary, Text };

// By extension: ".ini" and ".txt" are the text form, anything else the binary form.
DiagramForm FormByExtension(const QString& fileName);

struct StoredControl {
    QString Name;
    vde::TRect Bounds;
};

class DiagramSurface {
public:
    DiagramSurface();
    ~DiagramSurface();
    DiagramSurface(const DiagramSurface&) = delete;
    DiagramSurface& operator=(const DiagramSurface&) = delete;

    // The binary container stream.
    void LoadBinary(const QByteArray& bytes);
    // A file in the given form (by extension when not given). A missing file is an EFOpenError
    // in both forms.
    void LoadFile(const QString& fileName, DiagramForm form);
    void LoadFile(const QString& fileName) { LoadFile(fileName, FormByExtension(fileName)); }

    QByteArray SaveBinary();
    // Takes the stored editing selection off: no block selected (no red frame), no wire segment
    // selected (no coloured segment). The container's selection words are cleared too.
    void ClearSelection();

    vde::TDiagContainer& Container() { return *FContainer; }
    QWidget& Panel() { return *FPanel; }
    vde::TCanvas& Canvas() { return *FCanvas; }
    // The stand-ins for the stored foreign controls, in stream order, with the stored bounds.
    std::vector<StoredControl> Controls() const;

private:
    void LoadBinaryOnce(const QByteArray& bytes);
    // The names of the control-section entries of a stream, read through the library's block
    // and connection readers to find where that section starts; empty when it cannot be read.
    static QStringList ControlNames(const QByteArray& bytes);

    std::unique_ptr<QWidget> FPanel;
    std::unique_ptr<vde::TCanvas> FCanvas;
    std::unique_ptr<vde::TDiagContainer> FContainer;
    std::vector<QWidget*> FStandIns;
};

} // namespace veldiag
