#pragma once

#include <QStringList>
#include <QTest>
#include <QWidget>

#include "platform/ui/ViewController.h"

namespace ui::test {

// Writes every lifecycle call, prefixed with its name, into a shared journal.
class ProbeViewController : public ViewController {
public:
    ProbeViewController(QString name, QStringList* journal)
        : probeName(std::move(name)), probeJournal(journal) {
        setObjectName(probeName);
    }

    bool statusBarHidden = false;
    QSize sizeAtTransition;

    bool prefersStatusBarHidden() const override { return statusBarHidden; }

protected:
    void viewDidLoad() override { note("didLoad"); }
    void viewWillAppear(bool) override { note("willAppear"); }
    void viewDidAppear(bool) override { note("didAppear"); }
    void viewWillDisappear(bool) override { note("willDisappear"); }
    void viewDidDisappear(bool) override { note("didDisappear"); }
    void viewWillTransition(QSize size) override {
        sizeAtTransition = view()->size();
        note(QStringLiteral("transition %1x%2").arg(size.width()).arg(size.height()));
    }

private:
    void note(const QString& what) { probeJournal->append(probeName + "." + what); }

    QString probeName;
    QStringList* probeJournal;
};

} // namespace ui::test
