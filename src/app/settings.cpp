#include "app/settings.h"

#include "engine/rounding.h"
#include "platform/registrystore.h"

#include <cmath>
#include <limits>

namespace {
using Root = RegistryStore::Root;
const QString defaultCompany = QStringLiteral("Tessaly");
const QString productName = QStringLiteral("Lumora V3");
const QString optionsSection = QStringLiteral("Options");

QString registryPath(const CRegSettings &settings, const QString &section)
{
    const QString application =
        QStringLiteral("Software\\") + settings.Company() + QLatin1Char('\\') + settings.AppName();
    return section.isEmpty() ? application : application + QLatin1Char('\\') + section;
}

QString valueName(const QString &key)
{
    return key == QLatin1String("*") ? QString() : key;
}

bool deleteSetting(Root root, const QString &path, const QString &section, const QString &key)
{
    RegistryStore &store = registryStore();
    if (key.isEmpty()) // without a section this would be all the program has stored
        return !section.isEmpty() && store.keyExists(root, path) && store.deleteKey(root, path);
    return store.value(root, path, valueName(key)) && store.deleteValue(root, path, valueName(key));
}

QString readSetting(Root root, const QString &path, const QString &key, const QString &fallback)
{
    const std::optional<QString> value = registryStore().value(root, path, valueName(key));
    return value && !value->isEmpty() ? *value : fallback;
}

bool writeSetting(Root root, const QString &path, const QString &key, const QString &value)
{
    return bool(registryStore().setValue(root, path, valueName(key), value));
}

CRegSettings &programSettings()
{
    regSettings().setAppName(productName);
    return regSettings();
}

std::optional<double> decimal(const QString &text)
{
    bool isNumber = false;
    const double value = text.trimmed().toDouble(&isNumber);
    return isNumber && std::isfinite(value) ? std::optional(value) : std::nullopt;
}
}

CRegSettings::CRegSettings()
    : m_company(defaultCompany)
    , m_appName(productName)
{
}

void CRegSettings::setCompany(const QString &company)
{
    m_company = company.isEmpty() ? defaultCompany : company;
}

void CRegSettings::setAppName(const QString &name)
{
    const QString trimmed = name.trimmed();
    m_appName = trimmed.isEmpty() ? productName : trimmed;
}

bool CRegSettings::DeleteUserSetting(const QString &section, const QString &key)
{
    return deleteSetting(Root::CurrentUser, registryPath(*this, section), section, key);
}

QVector<std::pair<QString, QString>> CRegSettings::GetAllUserSettings(const QString &section) const
{
    return registryStore().values(Root::CurrentUser, registryPath(*this, section));
}

QString CRegSettings::GetUserSetting(const QString &section, const QString &key, const QString &fallback) const
{
    return readSetting(Root::CurrentUser, registryPath(*this, section), key, fallback);
}

bool CRegSettings::SaveUserSetting(const QString &section, const QString &key, const QString &value)
{
    return writeSetting(Root::CurrentUser, registryPath(*this, section), key, value);
}

bool CRegSettings::DeleteLocalSetting(const QString &section, const QString &key)
{
    return deleteSetting(Root::LocalMachine, registryPath(*this, section), section, key);
}

QVector<std::pair<QString, QString>> CRegSettings::GetAllLocalSettings(const QString &section) const
{
    return registryStore().values(Root::LocalMachine, registryPath(*this, section));
}

QString CRegSettings::GetLocalSetting(const QString &section, const QString &key, const QString &fallback) const
{
    return readSetting(Root::LocalMachine, registryPath(*this, section), key, fallback);
}

bool CRegSettings::SaveLocalSetting(const QString &section, const QString &key, const QString &value)
{
    return writeSetting(Root::LocalMachine, registryPath(*this, section), key, value);
}

CRegSettings &regSettings()
{
    static CRegSettings settings;
    return settings;
}

void SaveSetting(const QString &, const QString &section, const QString &key, const QString &value)
{
    ignore(programSettings().SaveUserSetting(section, key, value));
}

QString GetSetting(const QString &, const QString &section, const QString &key, const QString &fallback)
{
    return programSettings().GetUserSetting(section, key, fallback);
}

void SaveMachineSetting(const QString &, const QString &section, const QString &key, const QString &value)
{
    ignore(programSettings().SaveLocalSetting(section, key, value));
}

QString GetMachineSetting(const QString &, const QString &section, const QString &key, const QString &fallback)
{
    return programSettings().GetLocalSetting(section, key, fallback);
}

QString option(const char *key, const char *fallback)
{
    return GetSetting(productName, optionsSection, QString::fromUtf8(key), QString::fromUtf8(fallback));
}

void saveOption(const char *key, const QString &value)
{
    SaveSetting(productName, optionsSection, QString::fromUtf8(key), value);
}

bool truth(const QString &text, bool fallback)
{
    const QString word = text.trimmed();
    if (word.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0)
        return true;
    if (word.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0)
        return false;
    const std::optional<double> value = decimal(word);
    return value ? *value != 0 : fallback;
}

std::optional<int> number(const QString &text)
{
    const std::optional<double> value = decimal(text);
    if (!value || *value < std::numeric_limits<int>::min() || *value > std::numeric_limits<int>::max())
        return std::nullopt;
    return roundToInt(*value);
}

QString truthText(bool value)
{
    return value ? QStringLiteral("True") : QStringLiteral("False");
}
