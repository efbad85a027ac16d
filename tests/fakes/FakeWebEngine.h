#pragma once

#include "documentation/rules/WebViewFactory.h"
#include "documentation/window/WebEngine.h"

#include <QList>
#include <QPointer>
#include <QWidget>

/// A web view that shows nothing and records the requests; its properties are dynamic ones.
class FakeWebView : public QWidget, public WebView {
public:
    FakeWebView(WebViewServices given, QWidget* parent) : QWidget(parent), services(std::move(given)) {}

    QWidget* widget() override { return this; }
    void showPlace(const QString& fragment) override { place = fragment; }
    void find(const QString& text, bool backwards, const std::function<void(int)>& found) override {
        searches.append(backwards ? '-' + text : text);
        found(text == u"here" ? 2 : 0);
    }
    void magnify(double factor) override { magnification = factor; }

    QString page() const { return property("localHTMLName").toString(); }

    WebViewServices services;
    QString place;
    QStringList searches;
    double magnification = 0;
};

class FakeWebEngine : public WebEngine, public WebViewFactory {
public:
    QString obstacle() const override { return speaksAgainst; }
    WebViewFactory* factory(QString& why) override {
        why = failure;
        return failure.isEmpty() ? this : nullptr;
    }
    void start() override {}
    WebView* makeView(const WebViewServices& services, QWidget* parent) override {
        auto* view = new FakeWebView(services, parent);
        views.append(view);
        return view;
    }

    QString speaksAgainst;  ///< Known before the engine is used.
    QString failure;        ///< Known when the engine is used.
    QList<QPointer<FakeWebView>> views;
};
