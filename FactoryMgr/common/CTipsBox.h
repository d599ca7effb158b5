#pragma once

#include <QString>

class QWidget;

// The modal information box in which the module tells the user of a problem:
// a title, a text and one button. Without a widget application (a console
// host) there is nobody to show it to; the text then goes to the log.
class CTipsBox
{
public:
    static void Show(QWidget* pParent, const QString& strTitle, const QString& strText, const QString& strButton);
    // The box of the service object and the parameter file: title, text and
    // button translated in the context "CFactoryMgrIns".
    static void ShowTranslated(const char* szText);
};
