#include "sdk/entry_points.h"

#include <QStringList>
#include <QTest>

#include <type_traits>

class TestEntryPoints : public QObject {
    Q_OBJECT

private slots:
    void theTableHas85NamesEachOnceInOrder()
    {
#define UNIFOLD_NAME_CALLED(name, Contract) #name,
#define UNIFOLD_NAME_UNCALLED(name) #name,
        const QStringList names{UNIFOLD_ENTRY_POINTS(UNIFOLD_NAME_CALLED, UNIFOLD_NAME_UNCALLED)};
#undef UNIFOLD_NAME_CALLED
#undef UNIFOLD_NAME_UNCALLED
        const QStringList expected =
            QString("vek_enumerate vek_enum_devices vek_free_list vek_open vek_close vek_set_baud vek_firm_version "
                    "vek_reset_device vek_msr_mode_switch vek_msr_qm_start vek_msr_qm_status vek_msr_qm_get "
                    "vek_msr_qm_stop vek_msr_qm_status_raw vek_msr_qm_get_raw vek_msr_qm_stop_raw "
                    "vek_msr_get_crypto_card_sn vek_beep vek_msr_read vek_msr_write vek_msr_cancel initMSF isMSFNormal "
                    "inerrupt readCard writeCard closeMSF initIDR isIDRNormal getPhoto getIDCardInfo getImage closeIDR "
                    "isICNormal getICCardInfo genARQC star_ARPC_ExeICScript GetTxDetail GetLastDetail Icc_getstatus "
                    "GetAppStatus GetAmtTxDetail vek_icc_poweron vek_icc_poweroff vek_icc_status vek_icc_apdu "
                    "vek_pboc_get_card_info vek_pboc_get_arqc vek_pboc_arpc_exec_script vek_pboc_get_trans_detail "
                    "vek_pboc_get_card_info_all vek_idcr_read_bin vek_idcr_read vek_idcr_getinfo vek_idcr_read_samid "
                    "vek_idcr_read_uid vek_idcr_read_emid vek_idcr_read_dn vek_idcr_set_separation vek_query_rf_card "
                    "vek_idcr_transive vek_probe_rf vek_mifare_request vek_mifare_authentication vek_mifare_read_block "
                    "vek_mifare_write_block vek_mifare_init_value vek_mifare_read_value vek_mifare_increase_value "
                    "vek_mifare_decrease_value vek_mifare_restore vek_mifare_transfer vek_mifare_change_key "
                    "vek_ssse_get_issuer_info vek_ssse_get_user_info vek_rf_uid_list vek_fact_rf_switch "
                    "vek_fact_rf_set_protocol vek_fact_rf_carrier_off vek_fact_rf_set_reg vek_fact_rf_get_reg "
                    "vek_fact_rf_set_fwt vek_fact_rf_xchg vek_fact_rf_send vek_rf_detect")
                .split(' ');
        QCOMPARE(names, expected);
        QVERIFY(QStringList(names).removeDuplicates() == 0);
    }

    void fortySevenEntryPointsAreCalledByNobody()
    {
        int called = 0;
        int uncalled = 0;
#define UNIFOLD_COUNT_CALLED(name, Contract) ++called;
#define UNIFOLD_COUNT_UNCALLED(name) ++uncalled;
        UNIFOLD_ENTRY_POINTS(UNIFOLD_COUNT_CALLED, UNIFOLD_COUNT_UNCALLED)
#undef UNIFOLD_COUNT_CALLED
#undef UNIFOLD_COUNT_UNCALLED
        QCOMPARE(called, 38);
        QCOMPARE(uncalled, 47);
    }

    void thePointersAreNullUntilResolved()
    {
#define UNIFOLD_NULL_CALLED(name, Contract) QVERIFY(::name == nullptr);
#define UNIFOLD_NULL_UNCALLED(name) QVERIFY(::name == nullptr);
        UNIFOLD_ENTRY_POINTS(UNIFOLD_NULL_CALLED, UNIFOLD_NULL_UNCALLED)
#undef UNIFOLD_NULL_CALLED
#undef UNIFOLD_NULL_UNCALLED
    }

    void aCallHasItsContractsType()
    {
        static_assert(std::is_same_v<decltype(sdk::contract<vek_open>()), sdk::Open *>);
        static_assert(std::is_same_v<decltype(sdk::contract<vek_mifare_change_key>()), sdk::MifareKey *>);
        QVERIFY(sdk::contract<vek_open>() == nullptr);
    }
};

QTEST_APPLESS_MAIN(TestEntryPoints)
#include "test_entry_points.moc"
