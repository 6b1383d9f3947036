#pragma once

// The one space of enumerator values. Every enum class owns a range of it and no two ranges meet, so a bare
// value tells its class. Each number is written here and nowhere else; gaps leave room for more.
enum nxEnumValue : unsigned int {
    // The marks, good in every class.
    nxEnum_Undefined = 0,
    nxEnum_NoChange = 2,

    // nxBuySellEnum
    nxBuySell_Buy = 11,
    nxBuySell_Sell = 12,

    // nxLogLevelEnum
    nxLogLevel_Detail = 31,
    nxLogLevel_Info = 32,
    nxLogLevel_Notice = 33,
    nxLogLevel_Audit = 34,
    nxLogLevel_Attention = 35,
    nxLogLevel_Warn = 36,
    nxLogLevel_Error = 37,
    nxLogLevel_Fatal = 38,

    // nxProductTypeEnum
    nxProductType_Future = 101,
    nxProductType_Option = 102,
    nxProductType_Strategy = 103,
    nxProductType_SyntheticStrategy = 104,
    nxProductType_Stock = 105,
    nxProductType_ForeignExchange = 106,
    nxProductType_Crypto = 107,
    nxProductType_Index = 108,
    nxProductType_Bond = 109,
    nxProductType_Fund = 110,

    // nxStrategyTypeEnum
    nxStrategyType_CalendarSpread = 201,
    nxStrategyType_InterProductSpread = 202,
    nxStrategyType_Butterfly = 203,
    nxStrategyType_Condor = 204,
    nxStrategyType_Strip = 205,
    nxStrategyType_Pack = 206,
    nxStrategyType_Bundle = 207,
    nxStrategyType_Custom = 208,

    // nxValueStatusEnum
    nxValueStatus_Valid = 241,
    nxValueStatus_Null = 242,
    nxValueStatus_NoChange = 243,

    // nxSyntheticStrategyLegCalculationPriceTypeEnum
    nxSyntheticStrategyLegCalculationPriceType_BidAsk = 301,
    nxSyntheticStrategyLegCalculationPriceType_Last = 302,
    nxSyntheticStrategyLegCalculationPriceType_Mid = 303,
    nxSyntheticStrategyLegCalculationPriceType_Theoretical = 304,
    nxSyntheticStrategyLegCalculationPriceType_Settlement = 305,

    // nxPriceTradeVolumesUpdateTypeEnum
    nxPriceTradeVolumesUpdateType_Snapshot = 321,
    nxPriceTradeVolumesUpdateType_Delta = 322,
    nxPriceTradeVolumesUpdateType_Reset = 323,

    // nxTickDataPeriodEnum
    nxTickDataPeriod_Minute = 401,
    nxTickDataPeriod_5Minute = 402,
    nxTickDataPeriod_10Minute = 403,
    nxTickDataPeriod_30Minute = 404,
    nxTickDataPeriod_Hour = 405,
    nxTickDataPeriod_Session = 406,

    // nxFillSourceEnum
    nxFillSource_Exchange = 431,
    nxFillSource_Manual = 432,
    nxFillSource_Synthetic = 433,
    nxFillSource_Simulated = 434,

    // nxMarketByOrderActionTypeEnum
    nxMarketByOrderActionType_Add = 451,
    nxMarketByOrderActionType_Amend = 452,
    nxMarketByOrderActionType_Delete = 453,
    nxMarketByOrderActionType_Fill = 454,
    nxMarketByOrderActionType_Clear = 455,

    // nxTradingCapacityEnum
    nxTradingCapacity_OwnAccount = 461,
    nxTradingCapacity_MatchedPrincipal = 462,
    nxTradingCapacity_AnyOther = 463,

    // nxClientIDQualifierEnum
    nxClientIDQualifier_NaturalPerson = 471,
    nxClientIDQualifier_LegalEntity = 472,
    nxClientIDQualifier_Aggregated = 473,
    nxClientIDQualifier_Pending = 474,

    // nxExecutionDecisionQualifierEnum
    nxExecutionDecisionQualifier_Algorithm = 481,
    nxExecutionDecisionQualifier_NaturalPerson = 482,
    nxExecutionDecisionQualifier_Client = 483,

    // nxInvestmentDecisionQualifierEnum
    nxInvestmentDecisionQualifier_Algorithm = 491,
    nxInvestmentDecisionQualifier_NaturalPerson = 492,

    // nxMultiLegReportingTypeEnum
    nxMultiLegReportingType_SingleSecurity = 501,
    nxMultiLegReportingType_Leg = 502,
    nxMultiLegReportingType_MultiLeg = 503,

    // nxMessageChannelEnum
    nxMessageChannel_Price = 511,
    nxMessageChannel_MarketDepth = 512,
    nxMessageChannel_Order = 513,
    nxMessageChannel_ProductDefinition = 514,
    nxMessageChannel_Job = 515,
    nxMessageChannel_Admin = 516,

    // nxOrderTypeEnum
    nxOrderType_Limit = 1001,
    nxOrderType_Market = 1002,

    // nxExecutionRestrictionEnum
    nxExecutionRestriction_ImmediateOrCancel = 1051,
    nxExecutionRestriction_FillOrKill = 1052,
    nxExecutionRestriction_Stop = 1053,
    nxExecutionRestriction_Iceberg = 1054,
    nxExecutionRestriction_TrailingStop = 1055,
    nxExecutionRestriction_Bracket = 1056,
    nxExecutionRestriction_None = 1057,

    // nxOrderStatusEnum
    nxOrderStatus_Pending = 1101,
    nxOrderStatus_Working = 1102,
    nxOrderStatus_PartiallyFilled = 1103,
    nxOrderStatus_Held = 1104,
    nxOrderStatus_Deleted = 1105,
    nxOrderStatus_Filled = 1106,
    nxOrderStatus_Rejected = 1107,
    nxOrderStatus_Expired = 1108,

    // nxOrderTransactionStatusEnum
    nxOrderTransactionStatus_Pending = 1151,
    nxOrderTransactionStatus_Accepted = 1152,
    nxOrderTransactionStatus_Rejected = 1153,

    // nxSyntheticOrderTypeEnum
    nxSyntheticOrderType_Algorithm = 1201,
    nxSyntheticOrderType_Spread = 1202,
    nxSyntheticOrderType_Bracket = 1203,
    nxSyntheticOrderType_TrailingStop = 1204,
    nxSyntheticOrderType_Iceberg = 1205,

    // nxSyntheticChildOrderTypeEnum
    nxSyntheticChildOrderType_Child = 1251,
    nxSyntheticChildOrderType_Hedge = 1252,
    nxSyntheticChildOrderType_BracketProfit = 1253,
    nxSyntheticChildOrderType_BracketStopLoss = 1254,

    // nxBoolEnum
    nxBool_True = 5001,
    nxBool_False = 5002,

    // nxRoundingMethodEnum
    nxRoundingMethod_Nearest = 7403,

    // nxOrderFlagEnum
    nxOrderFlag_SpreadUnbalanced = 8001,

    // nxVorantParameterTypeEnum: 9603 and 9604 travel as text only
    nxVorantParameterType_Price = 9601,
    nxVorantParameterType_Volume = 9602,
    nxVorantParameterType_Product = 9603,
    nxVorantParameterType_String = 9604,
    nxVorantParameterType_Decimal = 9605,
    nxVorantParameterType_Double = 9606,
    nxVorantParameterType_Integer = 9607,
    nxVorantParameterType_Bool = 9608,

    // nxCurrencyEnum
    nxCurrency_AED = 10001,
    nxCurrency_ARS = 10002,
    nxCurrency_AUD = 10003,
    nxCurrency_BGN = 10004,
    nxCurrency_BHD = 10005,
    nxCurrency_BRL = 10006,
    nxCurrency_CAD = 10007,
    nxCurrency_CHF = 10008,
    nxCurrency_CLP = 10009,
    nxCurrency_CNH = 10010,
    nxCurrency_CNY = 10011,
    nxCurrency_COP = 10012,
    nxCurrency_CZK = 10013,
    nxCurrency_DKK = 10014,
    nxCurrency_EGP = 10015,
    nxCurrency_EUR = 10016,
    nxCurrency_GBP = 10017,
    nxCurrency_HKD = 10018,
    nxCurrency_HUF = 10019,
    nxCurrency_IDR = 10020,
    nxCurrency_ILS = 10021,
    nxCurrency_INR = 10022,
    nxCurrency_ISK = 10023,
    nxCurrency_JPY = 10024,
    nxCurrency_KES = 10025,
    nxCurrency_KRW = 10026,
    nxCurrency_KWD = 10027,
    nxCurrency_KZT = 10028,
    nxCurrency_MAD = 10029,
    nxCurrency_MXN = 10030,
    nxCurrency_MYR = 10031,
    nxCurrency_NGN = 10032,
    nxCurrency_NOK = 10033,
    nxCurrency_NZD = 10034,
    nxCurrency_OMR = 10035,
    nxCurrency_PEN = 10036,
    nxCurrency_PHP = 10037,
    nxCurrency_PKR = 10038,
    nxCurrency_PLN = 10039,
    nxCurrency_QAR = 10040,
    nxCurrency_RON = 10041,
    nxCurrency_RUB = 10042,
    nxCurrency_SAR = 10043,
    nxCurrency_SEK = 10044,
    nxCurrency_SGD = 10045,
    nxCurrency_THB = 10046,
    nxCurrency_TRY = 10047,
    nxCurrency_TWD = 10048,
    nxCurrency_UAH = 10049,
    nxCurrency_USD = 10050,
    nxCurrency_UYU = 10051,
    nxCurrency_VND = 10052,
    nxCurrency_ZAR = 10053,
    nxCurrency_BTC = 10301,
    nxCurrency_ETH = 10302,
    nxCurrency_USDT = 10303,
    nxCurrency_USDC = 10304,

    // nxFunctionEnum
    nxFunction_ExchangeOrder = 100231,
    nxFunction_ExchangeOrderTransaction = 100233,
    nxFunction_Price = 100304,
    nxFunction_MarketDepth = 100305,
    nxFunction_StrategyDefinition = 100321,
    nxFunction_MarketByOrder = 100326,
    nxFunction_PriceTradeVolumes = 100328,
    nxFunction_TheoreticalPrice = 100332,
    nxFunction_ReferenceLimitPrice = 100336,
    nxFunction_IntraDayProductUpdate = 100418,
    nxFunction_QuotePrice = 101502,
    nxFunction_ExchangeOrderWithPrice = 102500,
    nxFunction_News = 102600,

    // nxErrorEnum
    nxError_GeneralFailure = 1000002,
    nxError_NotANumber = 1000010,
    nxError_NumberOutOfRange = 1000011,
    nxError_InvalidDate = 1000012,
    nxError_LockFailed = 1000020,
    nxError_UnlockFailed = 1000021,
    nxError_LogFileFailed = 1000030,
    nxError_StreamContentMismatch = 1000224,
    nxError_StreamContentTruncated = 1000225,
    nxError_NoOnInit = 1018000,
    nxError_StartFailed = 1018001,
    nxError_ScriptLoadFailed = 1018003,
    nxError_CallbackFailed = 1018012,
    nxError_OrderTermsInvalid = 1018101,
    nxError_OrderPriceOffTick = 1018102,
    nxError_OrderDateInPast = 1018103,
    nxError_OrderMarketState = 1018104,
    nxError_OrderStopMisplaced = 1018105,
    nxError_OrderMeetsOwn = 1018106,
    nxError_OrderIsOver = 1018107,
    nxError_OrderIsExecuted = 1018108,
    nxError_OrderBeyondMargin = 1018109,
    nxError_StoppedByHost = 1018200,
    nxError_LimitMemory = 1018201,
    nxError_LimitInstructions = 1018202,
    nxError_LimitDepth = 1018203,
    nxError_LimitTimers = 1018204,
    nxError_LimitWindows = 1018205,
    nxError_LimitCollections = 1018206,
    nxError_LimitOpenOrders = 1018207,
    nxError_LimitOrders = 1018208,
    nxError_LimitSubscriptions = 1018209,
    nxError_LimitProducts = 1018210,
    nxError_LimitOutputs = 1018211,
    nxError_LimitChartLines = 1018212,
    nxError_LimitLogLine = 1018213,
    nxError_LimitLog = 1018214,
    nxError_LimitPattern = 1018215,
    nxError_LimitSubject = 1018216,
};
