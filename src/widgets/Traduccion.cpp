#include "widgets/Traduccion.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

using namespace Qt::StringLiterals;

bool cargarTraduccionQt() {
    QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Spain));
    auto* traductor = new QTranslator(QCoreApplication::instance());
    if (!traductor->load(u"qtbase_es"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        delete traductor;
        return false;
    }
    return QCoreApplication::installTranslator(traductor);
}
