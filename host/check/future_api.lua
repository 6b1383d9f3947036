-- The members that a script may name and that no bound class of this version has yet. An entry goes when its
-- member lands; a test tells of those that were left behind. "rw" is a property that may be written.

local function names(text)
  local result = {}
  for name in text:gmatch("%S+") do
    result[name] = "r"
  end
  return result
end

checker.future = {
  nxAlgoEventWindowObject = {
    functions = names "start stop enableRegression",
    properties = names [[
      id min max averagePrice vwap range totaltraded stddev change averageVolume first last size slope]],
  },
  nxAlgoTickDataCollectionObject = {
    functions = names "subscribe get createIndicator getIndicator",
    properties = names "count period product realTime",
  },
  nxAlgoTickDataObject = {
    functions = {},
    properties = names "open close high low volume time timeValue collection",
  },
  nxAlgoIndicatorObject = { functions = names "getValue getRealTimeValue", properties = names "name type" },
  nxAlgoDataSeriesObject = {
    functions = names "add get clear average stddev covariance maxX maxY minX minY",
    properties = names "size slope capacity",
  },
  nxAlgoMatrixObject = {
    functions = names "add subtract multiply transpose determinant inverse",
    properties = {},
  },
  nxAlgoQuantObject = { functions = names "normcdf", properties = {} },
  nxAlgoLibraryObject = { functions = names "call", properties = {} },
}
checker.future.nxAlgoDataSeriesObject.properties.capacity = "rw"

-- The globals that the engine does not bind yet, with their classes.
checker.futureGlobals = { matrix = "nxAlgoMatrixObject", quant = "nxAlgoQuantObject" }
