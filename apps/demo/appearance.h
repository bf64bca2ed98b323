#pragma once
// The demo host's "Language" menu (the library's texts in their original form, in English or in
// Russian) and "View" menu (a dark palette that the diagrams follow), both switched while the
// program runs; --language en|ru and --dark choose them at the start.

#include <QCommandLineParser>
#include <QMainWindow>

void AddAppearanceOptions(QCommandLineParser& Options);
// Adds the menus to the window's menu bar and applies what the options ask for; the diagrams
// must be open.
void AddAppearanceMenu(QMainWindow* Window, const QCommandLineParser& Options);
