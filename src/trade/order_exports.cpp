// The definitions of every order export, expanded from the table of trade/order_exports.h:
// each stores its arguments, runs its operation and guards against exceptions.
#include "trade/order_exports.h"

#include <cstdint>
#include <vector>

#include "core/guard.h"
#include "secmolra.h"
#include "trade/order_args.h"
#include "trade/order_ops.h"

namespace molra::trade {

CusLoginInfo* Caller::Record(CusLoginInfo& own) const {
  if (ex) return record;
  own = MakeRecord(khh, gdh);
  return &own;
}

}  // namespace molra::trade

using namespace molra::trade;
using molra::Export;

// Facets of an argument: its parameter declaration and how the export stores it.
#define MOLRA_DECL(kind) MOLRA_ARG_##kind(MOLRA_DECL_)
#define MOLRA_DECL_(type, name, store, bad) , type name
#define MOLRA_DECL_FIRST(kind) MOLRA_ARG_##kind(MOLRA_DECL_FIRST_)
#define MOLRA_DECL_FIRST_(type, name, store, bad) type name
#define MOLRA_STORE(kind) MOLRA_ARG_##kind(MOLRA_STORE_)
#define MOLRA_STORE_(type, name, store, bad) store;

#define MOLRA_GDH_VALUE_Entrust lpGdh
#define MOLRA_GDH_VALUE_Tradable lpGdh
#define MOLRA_GDH_VALUE_Basket lpGdh
#define MOLRA_GDH_VALUE_Withdraw ""
#define MOLRA_GDH_VALUE_BatchWithdraw ""
#define MOLRA_GDH_VALUE_BatchEntrust ""

#define MOLRA_BODY(op, target, caller, before, after, mode)                         \
  {                                                                                 \
    const char* const name = __func__;                                              \
    return Export(name, [&] {                                                       \
      OrderArgs a;                                                                  \
      MOLRA_EACH(MOLRA_STORE, before)                                               \
      MOLRA_EACH(MOLRA_STORE, after) return Run##op(name, target, caller, a, mode); \
    });                                                                             \
  }
#define MOLRA_PLAIN(fn, op, target, before, after, extra, mode)                             \
  SECMOLRA_API int64_t SECMOLRA_##fn(MOLRA_PLAIN_ARGS(MOLRA_DECL, op, before, after) extra) \
      MOLRA_BODY(op, target, Caller::Plain(lpKhh, MOLRA_GDH_VALUE_##op), before, after, mode)
#define MOLRA_EX(fn, op, target, before, after, extra, mode)                         \
  SECMOLRA_API int64_t SECMOLRA_##fn(MOLRA_EX_ARGS(MOLRA_DECL, before, after) extra) \
      MOLRA_BODY(op, target, Caller::Ex(info), before, after, mode)

#define MOLRA_FORMS_kSync(Name, op, target, before, after) \
  MOLRA_PLAIN(Name, op, target, before, after, , kSync)    \
  MOLRA_EX(Name##Ex, op, target, before, after, , kSync)
#define MOLRA_FORMS_kAll(Name, op, target, before, after)                            \
  MOLRA_FORMS_kSync(Name, op, target, before, after) MOLRA_PLAIN(                    \
      Name##_ASync, op, target, before, after, MOLRA_DECL(Kfsbdbh), Async(nKFSBDBH)) \
      MOLRA_EX(Name##Ex_ASync, op, target, before, after, MOLRA_DECL(Kfsbdbh), Async(nKFSBDBH))
#define MOLRA_FORMS_kTagged(Name, op, target, before, after)                  \
  MOLRA_FORMS_kSync(Name, op, target, before, after)                          \
      MOLRA_PLAIN(Name##_ASync, op, target, before, after, , (Mode{true, 0})) \
          MOLRA_EX(Name##Ex_ASync, op, target, before, after, , (Mode{true, 0}))
#define MOLRA_DEFINE(Name, op, target, forms, before, after) \
  MOLRA_FORMS_##forms(Name, op, target, before, after)

extern "C" {
MOLRA_ORDER_EXPORTS(MOLRA_DEFINE)
}  // extern "C"
