#pragma once

#include <QString>
#include <QVector>

#include <optional>
#include <utility>

/// Reaches the store of settings: values are text under company, application and section.
class CRegSettings
{
public:
    CRegSettings();

    QString Company() const { return m_company; }
    /// An empty text selects the default company.
    void setCompany(const QString &company);
    QString AppName() const { return m_appName; }
    /// Trimmed; an empty text selects the program's product name.
    void setAppName(const QString &name);

    /// Deletes one value; with an empty key, the whole section.
    bool DeleteUserSetting(const QString &section, const QString &key);
    QVector<std::pair<QString, QString>> GetAllUserSettings(const QString &section) const;
    /// `fallback` when the section or the key is not there or its value is empty. The key "*" is the unnamed value.
    QString GetUserSetting(const QString &section, const QString &key, const QString &fallback) const;
    bool SaveUserSetting(const QString &section, const QString &key, const QString &value);

    /// The same four against the machine-wide root.
    bool DeleteLocalSetting(const QString &section, const QString &key);
    QVector<std::pair<QString, QString>> GetAllLocalSettings(const QString &section) const;
    QString GetLocalSetting(const QString &section, const QString &key, const QString &fallback) const;
    bool SaveLocalSetting(const QString &section, const QString &key, const QString &value);

private:
    QString m_company;
    QString m_appName;
};

/// The one instance, made at first use.
CRegSettings &regSettings();

/// What all other code calls. The application argument is ignored: the application is always "Lumora V3".
void SaveSetting(const QString &application, const QString &section, const QString &key, const QString &value);
QString GetSetting(
    const QString &application, const QString &section, const QString &key, const QString &fallback = {});
void SaveMachineSetting(const QString &application, const QString &section, const QString &key, const QString &value);
QString GetMachineSetting(
    const QString &application, const QString &section, const QString &key, const QString &fallback = {});

/// Short forms for the two sections used everywhere.
QString option(const char *key, const char *fallback);
void saveOption(const char *key, const QString &value);

/// A stored truth: "True" in any case and every number but 0 are true, "False" and 0 false; anything else gives
/// `fallback`.
bool truth(const QString &text, bool fallback);
/// A stored number; none when the text is not one.
std::optional<int> number(const QString &text);
/// "True" or "False", as check marks are stored.
QString truthText(bool value);
