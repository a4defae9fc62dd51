#pragma once

#include <QIcon>
#include <QStatusBar>
#include <QVector>

class QLabel;

/// `StatusBar1`: panels numbered from 1, each with an icon and a text that is shortened in the middle when it is too
/// long.
class StatusPanels : public QStatusBar
{
    Q_OBJECT
public:
    /// `stretches` per panel; 0 keeps a panel as wide as its text.
    StatusPanels(const QVector<int> &stretches, QWidget *parent = nullptr);

    void setPanelText(int panel, const QString &text);
    QString panelText(int panel) const;
    void setPanelIcon(int panel, const QIcon &icon);
    QIcon panelIcon(int panel) const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showShortened(int panel);
    struct Panel
    {
        QLabel *icon = nullptr;
        QLabel *text = nullptr;
        QString full;
        QIcon image;
    };
    QVector<Panel> m_panels;
};
