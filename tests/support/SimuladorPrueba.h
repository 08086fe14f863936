#pragma once

// Starts the real platform simulator on a free loopback port for one test,
// and reads back what it recorded.
#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

class SimuladorPrueba {
  public:
    // `dir` holds the configuration and the record; `ini` is the
    // configuration's text without the record line. A simulator that does
    // not start ends the run: no test can go on without its platform.
    SimuladorPrueba(const QString& dir, const QString& ini)
        : m_registro(dir + QStringLiteral("/registro.jsonl")) {
        const QString conf = dir + QStringLiteral("/sim.ini");
        QFile f(conf);
        if (f.open(QIODevice::WriteOnly | QIODevice::Truncate)) f.write(ini.toUtf8());
        f.close();
        QFile::remove(m_registro);
        m_proceso.setProgram(QCoreApplication::applicationDirPath() +
                             QStringLiteral("/sms-platform-sim"));
        m_proceso.setArguments({QStringLiteral("--port"), QStringLiteral("0"),
                                QStringLiteral("--config"), conf, QStringLiteral("--registro"),
                                m_registro});
        m_proceso.start();
        QByteArray salida;
        while (m_proceso.waitForReadyRead(5000)) {
            salida += m_proceso.readAllStandardOutput();
            if (salida.contains('\n')) break;
        }
        const auto m = QRegularExpression(QStringLiteral(R"(127\.0\.0\.1:(\d+)/)"))
                           .match(QString::fromUtf8(salida));
        if (m.hasMatch()) m_puerto = m.captured(1).toInt();
        if (m_puerto <= 0) qFatal("the platform simulator did not start");
    }
    ~SimuladorPrueba() { detener(); }

    bool listo() const { return m_puerto > 0; }
    int puerto() const { return m_puerto; }
    // A host as an account stores it.
    QString host() const { return QStringLiteral("http://127.0.0.1:%1").arg(m_puerto); }
    void detener() {
        if (m_proceso.state() == QProcess::NotRunning) return;
        m_proceso.kill();
        m_proceso.waitForFinished(5000);
    }
    // Every item the simulator accepted, in order.
    QList<QJsonObject> registro() const { return lineas(false); }
    // Every repeat of an item it had taken, which it answered without
    // sending again.
    QList<QJsonObject> duplicados() const { return lineas(true); }

  private:
    QList<QJsonObject> lineas(bool duplicados) const {
        QList<QJsonObject> out;
        QFile f(m_registro);
        if (!f.open(QIODevice::ReadOnly)) return out;
        for (const QByteArray& linea : f.readAll().split('\n')) {
            if (linea.trimmed().isEmpty()) continue;
            const QJsonObject o = QJsonDocument::fromJson(linea).object();
            if (o.value(QStringLiteral("duplicado")).toBool() == duplicados) out << o;
        }
        return out;
    }

    QString m_registro;
    QProcess m_proceso;
    int m_puerto = 0;
};
