#include "exchange/exchange_table.h"

namespace qvexchange {

std::vector<ExchangeRow>& ExchangeTable() {
  static std::vector<ExchangeRow> table;
  return table;
}

}  // namespace qvexchange
