// The SDK's 85 entry points, by name and in the order of their resolution. This is the only list of them: the bench's
// table pointers, the loader's pass and the exports of our own driver libraries are all made from it.
//
//   CALLED(name, Contract)  an entry point that the bench calls; Contract is its function type in sdk/contracts.h
//   UNCALLED(name)          one that is resolved and called by nobody
//
// Only macros stand here, because a bench and a driver give the same names to different things: pointer variables
// there (sdk/entry_points.h), functions here (drivers/core/abi.h).
#pragma once

#define UNIFOLD_ENTRY_POINTS(CALLED, UNCALLED)                                                                         \
    UNCALLED(vek_enumerate)                                                                                            \
    CALLED(vek_enum_devices, EnumDevices)                                                                              \
    CALLED(vek_free_list, FreeList)                                                                                    \
    CALLED(vek_open, Open)                                                                                             \
    CALLED(vek_close, Close)                                                                                           \
    CALLED(vek_set_baud, SetBaud)                                                                                      \
    CALLED(vek_firm_version, FirmVersion)                                                                              \
    UNCALLED(vek_reset_device)                                                                                         \
    CALLED(vek_msr_mode_switch, MsrModeSwitch)                                                                         \
    CALLED(vek_msr_qm_start, MsrSession)                                                                               \
    CALLED(vek_msr_qm_status, MsrSession)                                                                              \
    CALLED(vek_msr_qm_get, MsrGet)                                                                                     \
    CALLED(vek_msr_qm_stop, MsrSession)                                                                                \
    UNCALLED(vek_msr_qm_status_raw)                                                                                    \
    UNCALLED(vek_msr_qm_get_raw)                                                                                       \
    UNCALLED(vek_msr_qm_stop_raw)                                                                                      \
    UNCALLED(vek_msr_get_crypto_card_sn)                                                                               \
    CALLED(vek_beep, Beep)                                                                                             \
    UNCALLED(vek_msr_read)                                                                                             \
    CALLED(vek_msr_write, MsrWrite)                                                                                    \
    UNCALLED(vek_msr_cancel)                                                                                           \
    UNCALLED(initMSF)                                                                                                  \
    UNCALLED(isMSFNormal)                                                                                              \
    UNCALLED(inerrupt)                                                                                                 \
    UNCALLED(readCard)                                                                                                 \
    UNCALLED(writeCard)                                                                                                \
    UNCALLED(closeMSF)                                                                                                 \
    UNCALLED(initIDR)                                                                                                  \
    UNCALLED(isIDRNormal)                                                                                              \
    UNCALLED(getPhoto)                                                                                                 \
    UNCALLED(getIDCardInfo)                                                                                            \
    UNCALLED(getImage)                                                                                                 \
    UNCALLED(closeIDR)                                                                                                 \
    UNCALLED(isICNormal)                                                                                               \
    UNCALLED(getICCardInfo)                                                                                            \
    UNCALLED(genARQC)                                                                                                  \
    UNCALLED(star_ARPC_ExeICScript)                                                                                    \
    UNCALLED(GetTxDetail)                                                                                              \
    UNCALLED(GetLastDetail)                                                                                            \
    UNCALLED(Icc_getstatus)                                                                                            \
    UNCALLED(GetAppStatus)                                                                                             \
    UNCALLED(GetAmtTxDetail)                                                                                           \
    CALLED(vek_icc_poweron, IccPowerOn)                                                                                \
    CALLED(vek_icc_poweroff, IccPowerOff)                                                                              \
    CALLED(vek_icc_status, IccStatus)                                                                                  \
    CALLED(vek_icc_apdu, IccApdu)                                                                                      \
    CALLED(vek_pboc_get_card_info, PbocGetCardInfo)                                                                    \
    CALLED(vek_pboc_get_arqc, PbocGetArqc)                                                                             \
    UNCALLED(vek_pboc_arpc_exec_script)                                                                                \
    UNCALLED(vek_pboc_get_trans_detail)                                                                                \
    UNCALLED(vek_pboc_get_card_info_all)                                                                               \
    UNCALLED(vek_idcr_read_bin)                                                                                        \
    UNCALLED(vek_idcr_read)                                                                                            \
    CALLED(vek_idcr_getinfo, IdcrGetInfo)                                                                              \
    CALLED(vek_idcr_read_samid, IdcrReadText)                                                                          \
    CALLED(vek_idcr_read_uid, IdcrReadText)                                                                            \
    CALLED(vek_idcr_read_emid, IdcrReadText)                                                                           \
    CALLED(vek_idcr_read_dn, IdcrReadText)                                                                             \
    CALLED(vek_idcr_set_separation, IdcrSetSeparation)                                                                 \
    UNCALLED(vek_query_rf_card)                                                                                        \
    CALLED(vek_idcr_transive, IdcrTransive)                                                                            \
    CALLED(vek_probe_rf, ProbeRf)                                                                                      \
    CALLED(vek_mifare_request, MifareRequest)                                                                          \
    CALLED(vek_mifare_authentication, MifareKey)                                                                       \
    CALLED(vek_mifare_read_block, MifareReadBlock)                                                                     \
    CALLED(vek_mifare_write_block, MifareWriteBlock)                                                                   \
    CALLED(vek_mifare_init_value, MifareValue)                                                                         \
    CALLED(vek_mifare_read_value, MifareReadValue)                                                                     \
    CALLED(vek_mifare_increase_value, MifareValue)                                                                     \
    CALLED(vek_mifare_decrease_value, MifareValue)                                                                     \
    UNCALLED(vek_mifare_restore)                                                                                       \
    UNCALLED(vek_mifare_transfer)                                                                                      \
    CALLED(vek_mifare_change_key, MifareKey)                                                                           \
    CALLED(vek_ssse_get_issuer_info, SsseGetInfo)                                                                      \
    CALLED(vek_ssse_get_user_info, SsseGetInfo)                                                                        \
    UNCALLED(vek_rf_uid_list)                                                                                          \
    UNCALLED(vek_fact_rf_switch)                                                                                       \
    UNCALLED(vek_fact_rf_set_protocol)                                                                                 \
    UNCALLED(vek_fact_rf_carrier_off)                                                                                  \
    UNCALLED(vek_fact_rf_set_reg)                                                                                      \
    UNCALLED(vek_fact_rf_get_reg)                                                                                      \
    UNCALLED(vek_fact_rf_set_fwt)                                                                                      \
    UNCALLED(vek_fact_rf_xchg)                                                                                         \
    UNCALLED(vek_fact_rf_send)                                                                                         \
    UNCALLED(vek_rf_detect)
