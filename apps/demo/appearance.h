#pragma once
// The demo host's "Language" menu: the library's texts in their original form, in English or in
// Russian, switched while the program runs. The same choice can be made at the start with
// --language en|ru.

#include <QCommandLineParser>
#include <QMainWindow>

void AddAppearanceOptions(QCommandLineParser& Options);
// Adds the menu to the window's menu bar and applies what the options ask for.
void AddAppearanceMenu(QMainWindow* Window, const QCommandLineParser& Options);
