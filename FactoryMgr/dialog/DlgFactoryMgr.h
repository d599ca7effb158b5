#pragma once

#include "BaseDialog.h"
#include "FactoryParams.h"
#include "CBusyTaskOwner.h"

#include <QModelIndex>

#include <memory>

class CLaserTab;
class CMachineTab;
class CMotorTab;
class CSpeedTab;
class CSystemTab;
class IResolution;
class QTableWidget;
namespace Ui {
class DlgFactoryMgr;
}

// The machine settings dialog. It edits a working copy of the factory
// parameter record, one table per tab, and hands the copy out when asked.
// Read, Upload and Calibrate only emit signals; the service object that made
// the dialog does the device work.
class DlgFactoryMgr : public BaseDialog, public CBusyTaskOwner
{
    Q_OBJECT
public:
    // Tasks of RunTask.
    enum Task
    {
        TaskReadFromDevice = 0,
        TaskWriteToDevice = 1
    };

    explicit DlgFactoryMgr(FactoryParams* pRecord, QWidget* parent = nullptr);
    ~DlgFactoryMgr() override;

    // Whole-record copies, 720 bytes each. All return 0.
    int SetParams(const FactoryParams& params);
    int GetParams(FactoryParams& params) const;
    int GetSnapshotParams(FactoryParams& params) const;

    // Import and export of an .ini file, asked for with a file dialog.
    void ImportParams();
    void ExportParams();
    // The calibration wizard's result: X and Y steps multiplied by the ratios.
    void ApplyXyStepRatio(double dRatioW, double dRatioH);
    // Puts the Motor and Machine tables back into display mode.
    void ResetCellEditors();
    // The screen scaling service, or null when "Resolution" could not be loaded.
    IResolution* Resolution() const;
    // Removes every red mark of the read-back check. Invokable, so that a host
    // that has read the controller's values into the dialog can clear them.
    Q_INVOKABLE void ClearInvalidMarks();
    // Shows a value the device did not keep, put back, and marks its cell red.
    // nTableKind: a FactoryParamKey::Table (0 Motor, 1 Laser, 2 Processing,
    // 3 Machine). A Laser row is told by its row identifier: the field is the
    // one the row shows.
    void MarkInvalidCell(int nTableKind, int nRow, int nColumn, double dValue);
    // The Laser table's row that shows the row identifier nId, or -1.
    int LaserRowOfId(int nId) const;
    // Shows the Laser values anew, after values were put back without a mark.
    void RefillLaserColumns();
    // True when what the controls hold, collected, differs from the record
    // the dialog was made over (the service object's): edits not yet saved
    // or uploaded. Asked by hosts before they replace or close the dialog.
    Q_INVOKABLE bool IsEdited() const;
    // What the controls hold, as the record a collection would give (720
    // bytes), without collecting: hosts count the changes not yet saved.
    Q_INVOKABLE QByteArray CollectedParams() const;
    // What the tables show and edit: the four sections, between the working
    // record's copy in and collection out.
    FactoryParams& DisplayParams();
    // Makes (row, column) the Laser tab's current cell and opens its editor.
    void SelectLaserCell(int nRow, int nColumn);

    // IThreadDialogOwner: task 0 reads the working record from the device,
    // task 1 writes it.
    int RunTask(int nTask, void* pParam) override;

signals:
    void CorrectXyStepSignal();
    void ReadCurParamsFromDeviceSignal();
    void UploadCurParamsToDeviceSignal();

public slots:
    // true: working record into the controls; false: controls into the working record.
    void DataToCtrlSlot(bool bDataToCtrl);
    void on_tableWidget_motor_clicked(const QModelIndex& index);
    void on_MotorSelchangeComboValue(int nIndex);
    void on_MotorKillfocusEditValue();
    void on_radioButton_laserSingle_toggled(bool checked);
    void on_radioButton_laserDouble_toggled(bool checked);
    void on_radioButton_tubeSingle_toggled(bool checked);
    void on_radioButton_tubeDouble_toggled(bool checked);
    void on_tableWidget_laser_clicked(const QModelIndex& index);
    void on_LaserSelchangeComboValue(int nIndex);
    void on_LaserKillfocusEditValue();
    void on_tableWidget_machine_clicked(const QModelIndex& index);
    void on_MachineSelchangeComboValue(int nIndex);
    void on_MachineKillfocusEditValue();
    void on_tableWidget_speed_clicked(const QModelIndex& index);
    void on_SpeedKillfocusEditValue();
    void on_pushButton_clear_clicked();
    void on_pushButton_mainboardUpgrade_clicked();
    void on_pushButton_panelUpgrade_clicked();

private slots:
    void on_tabWidget_currentChanged(int index);
    void on_pushButton_correctXyStep_clicked();
    void on_pushButton_read_clicked();
    void on_pushButton_upload_clicked();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // The property table of a FactoryParamKey::Table, or null.
    QTableWidget* PropertyTable(int nTable) const;
    void RetranslateTexts();
    void InitDialog();
    // The fields that leave the dialog forced, whatever the controls hold.
    static void ForceOutgoingFields(FactoryParams& params);
    // What a collection would give, without collecting.
    FactoryParams Collected() const;
    void CopyRecordToDisplay();
    void CopyDisplayToRecord();
    void FillAllTables();

    Ui::DlgFactoryMgr* ui;
    FactoryParams* m_pRecord;           // the caller's record; written back by import only
    FactoryParams m_workParams;         // what every control edits
    FactoryParams m_snapshotParams;     // the caller's record at construction, never edited
    // What the tables edit, one section per tab: the axis blocks of the
    // Motor table, the laser, machine and speed display sections.
    FactoryParams m_displayParams;
    IResolution* m_pResolution;
    bool m_bHomepageFilled;
    // Each tab's rules, over the display data above.
    std::unique_ptr<CMotorTab> m_pMotorTab;
    std::unique_ptr<CLaserTab> m_pLaserTab;
    std::unique_ptr<CMachineTab> m_pMachineTab;
    std::unique_ptr<CSpeedTab> m_pSpeedTab;
    std::unique_ptr<CSystemTab> m_pSystemTab;
};
