// Every order export, from one table. A row names the export, its operation (which checks
// its arguments and runs it), its family, the forms it has, and its arguments between the
// customer and the request number: those before the shareholder account of the plain form
// and those after it. From the table, order_exports.cpp defines every export with its
// exception guard, and the bad-input test builds its call of each one.
//
// Forms: kAll   plain, Ex, _ASync (+ int64_t nKFSBDBH), Ex_ASync (+ nKFSBDBH)
//        kTagged plain, Ex, _ASync, Ex_ASync, all with the same arguments (the batch's own
//               number tags the reply)
//        kSync  plain, Ex
// The plain form takes `const char* lpKhh` first, then the arguments before, the
// shareholder account `const char* lpGdh` (operations that take one), the arguments after;
// the Ex form takes `CusLoginInfo* info` first and no shareholder account.
#pragma once

// clang-format off
//  export                    operation      family                                      forms    before                                  after
#define MOLRA_ORDER_EXPORTS(X) \
  X(OrderEntrust,             Entrust,       Fixed(Fam::kOrderEntrust),                  kAll,    (Jys, Zqdm, Jylb, Wtsl64, Wtjg, Ddlx64), (None)) \
  X(ETFEntrust,               Entrust,       ByCategory(Biz::kETF),                      kAll,    (Jys, Zqdm, Jylb, Wtsl32),              (Step)) \
  X(ETFBasketEntrust,         Basket,        Fixed(Fam::kOrderEntrust),                  kSync,   (Jys, EtfCode),                         (Units, Price, Ddlx64)) \
  X(ZQHGEntrust,              Entrust,       ByCategory(Biz::kZQHG),                     kAll,    (Jys, Zqdm, Jylb, Wtsl32, Wtjg, Ddlx64), (None)) \
  X(ZQHGCrk,                  Entrust,       ByCategory(Biz::kZQHGCrk),                  kAll,    (Jys, Zqdm, Jylb, Wtsl32),              (None)) \
  X(FXYW,                     Entrust,       ByCategory(Biz::kFXYW),                     kAll,    (Jys, Zqdm, Jylb, Wtsl64, Wtjg, Ddlx64), (None)) \
  X(DZJY,                     Entrust,       ByCategory(Biz::kDZJY),                     kSync,   (Jys, Zqdm, Jylb, Wtsl64, Wtjg, Ddlx64), (Dfxw, Lxr, Lxdh, Hyh, Dfgdh, Pddm, Tdbz)) \
  X(Lof,                      Entrust,       ByCategory(Biz::kLof),                      kAll,    (Jys, Zqdm, Jylb, Wtsl32, Wtjg, Flag),  (None)) \
  X(PHDJEntrust,              Entrust,       Fixed(Fam::kPHDJEntrust),                   kAll,    (Jys, Zqdm, Jylb, Wtsl64, Wtjg, Ddlx64), (None)) \
  X(FJY,                      Entrust,       ByCategory(Biz::kFJY),                      kAll,    (Jys, Zqdm, Jylb, Wtsl64, Wtjg, Ddlx64), (None)) \
  X(BatchOrderEntrust,        BatchEntrust,  Fam::kBatchEntrust,                         kTagged, (Rows, Wtpch),                          (None)) \
  X(OrderWithdraw,            Withdraw,      (WithdrawTarget{Fam::kOrderWithdraw, By::kWth}),     kAll, (Jys, Cxwth),     (None)) \
  X(OrderWithdrawByKFSBDBH,   Withdraw,      (WithdrawTarget{Fam::kOrderWithdraw, By::kKfsbdbh}), kAll, (Jys, CxKfsbdbh), (None)) \
  X(ETFWithdraw,              Withdraw,      (WithdrawTarget{Fam::kETFWithdraw, By::kWth}),       kAll, (Jys, Cxwth),     (None)) \
  X(ETFWithdrawByKFSBDBH,     Withdraw,      (WithdrawTarget{Fam::kETFWithdraw, By::kKfsbdbh}),   kAll, (Jys, CxKfsbdbh), (None)) \
  X(ZQHGWithdraw,             Withdraw,      (WithdrawTarget{Fam::kZQHGWithdraw, By::kWth}),      kAll, (Jys, Cxwth),     (None)) \
  X(ZQHGWithdrawByKFSBDBH,    Withdraw,      (WithdrawTarget{Fam::kZQHGWithdraw, By::kKfsbdbh}),  kAll, (Jys, CxKfsbdbh), (None)) \
  X(LOFWithdraw,              Withdraw,      (WithdrawTarget{Fam::kLOFWithdraw, By::kWth}),       kAll, (Jys, Cxwth),     (None)) \
  X(LOFWithdrawByKFSBDBH,     Withdraw,      (WithdrawTarget{Fam::kLOFWithdraw, By::kKfsbdbh}),   kAll, (Jys, CxKfsbdbh), (None)) \
  X(PHDJWithdraw,             Withdraw,      (WithdrawTarget{Fam::kPHDJWithdraw, By::kWth}),      kAll, (Jys, Cxwth),     (None)) \
  X(FXYWWithdraw,             Withdraw,      (WithdrawTarget{Fam::kFXYWWithdraw, By::kWth}),      kAll, (Jys, Cxwth),     (None)) \
  X(FJYWithdraw,              Withdraw,      (WithdrawTarget{Fam::kFJYWithdraw, By::kWth}),       kAll, (Jys, Cxwth),     (None)) \
  X(BatchOrderWithdraw,       BatchWithdraw, Fam::kBatchWithdraw,                        kTagged, (Lsh),                                  (None)) \
  X(TradableQty,              Tradable,      Fam::kTradableQty,                          kSync,   (Jys, Zqdm, Jylb, Wtjg, Ddlx32),        (None)) \
  X(ETFTradableQty,           Tradable,      Fam::kETFTradableQty,                       kSync,   (Jys, Zqdm, Jylb),                      (None)) \
  X(ZQHGTradableQty,          Tradable,      Fam::kZQHGTradableQty,                      kSync,   (Jys, Zqdm, Jylb),                      (None)) \
  X(LOFTradableQty,           Tradable,      Fam::kLOFTradableQty,                       kSync,   (Jys, Zqdm, Jylb, Wtjg, Ddlx32),        (None)) \
  X(PHDJTradableQty,          Tradable,      Fam::kPHDJTradableQty,                      kSync,   (Jys, Zqdm, Jylb, Wtjg, Ddlx32),        (None)) \
  X(FXYWTradableQty,          Tradable,      Fam::kFXYWTradableQty,                      kSync,   (Jys, Zqdm, Jylb, Wtjg, Ddlx32),        (None)) \
  X(FJYTradableQty,           Tradable,      Fam::kFJYTradableQty,                       kSync,   (Jys, Zqdm, Jylb, Wtjg, Ddlx32),        (None))

// The arguments: K(type, parameter, how the export stores it in OrderArgs `a`, the bad-input
// test's value for it from its Bad `b`).
#define MOLRA_ARG_Khh(K)       K(const char*, lpKhh, (void)0, S("lpKhh"))
#define MOLRA_ARG_Info(K)      K(CusLoginInfo*, info, (void)0, Rec())
#define MOLRA_ARG_Gdh(K)       K(const char*, lpGdh, (void)0, S("lpGdh"))
#define MOLRA_ARG_Kfsbdbh(K)   K(int64_t, nKFSBDBH, (void)0, I64("nKFSBDBH"))
#define MOLRA_ARG_Jys(K)       K(const char*, lpJys, a.jys = lpJys, S("lpJys"))
#define MOLRA_ARG_Zqdm(K)      K(const char*, lpZqdm, a.zqdm = lpZqdm, S("lpZqdm"))
#define MOLRA_ARG_EtfCode(K)   K(const char*, lpEtfCode, a.zqdm = lpEtfCode, S("lpEtfCode"))
#define MOLRA_ARG_Jylb(K)      K(int32_t, nJylb, a.jylb = nJylb, I32("nJylb"))
#define MOLRA_ARG_Wtsl32(K)    K(int32_t, lWtsl, a.wtsl = lWtsl, I32("lWtsl"))
#define MOLRA_ARG_Wtsl64(K)    K(int64_t, lWtsl, a.wtsl = lWtsl, I64("lWtsl"))
#define MOLRA_ARG_Wtjg(K)      K(double, lfWtjg, a.wtjg = lfWtjg, D("lfWtjg"))
#define MOLRA_ARG_Price(K)     K(double, lfPrice, a.wtjg = lfPrice, D("lfPrice"))
#define MOLRA_ARG_Ddlx32(K)    K(int32_t, lDdlx, a.ddlx = lDdlx, I32("lDdlx"))
#define MOLRA_ARG_Ddlx64(K)    K(int64_t, lDdlx, (a.ddlx = lDdlx, a.byte91 = static_cast<uint8_t>(lDdlx)), I64("lDdlx"))
#define MOLRA_ARG_Flag(K)      K(char, flag, a.byte91 = static_cast<uint8_t>(flag), Flag())
#define MOLRA_ARG_Step(K)      K(const char*, lpStep, a.step = lpStep, S("lpStep"))
#define MOLRA_ARG_Dfxw(K)      K(const char*, lpDfxw, a.dfxw = lpDfxw, S("lpDfxw"))
#define MOLRA_ARG_Lxr(K)       K(const char*, lpLxr, a.lxr = lpLxr, S("lpLxr"))
#define MOLRA_ARG_Lxdh(K)      K(const char*, lpLxdh, a.lxdh = lpLxdh, S("lpLxdh"))
#define MOLRA_ARG_Hyh(K)       K(const char*, lpHyh, a.hyh = lpHyh, S("lpHyh"))
#define MOLRA_ARG_Dfgdh(K)     K(const char*, lpDfgdh, a.dfgdh = lpDfgdh, S("lpDfgdh"))
#define MOLRA_ARG_Pddm(K)      K(int32_t, nPddm, a.pddm = nPddm, I32("nPddm"))
#define MOLRA_ARG_Tdbz(K)      K(int32_t, nTdbz, a.tdbz = nTdbz, I32("nTdbz"))
#define MOLRA_ARG_Cxwth(K)     K(int64_t, nCxwth, a.number = nCxwth, I64("nCxwth"))
#define MOLRA_ARG_CxKfsbdbh(K) K(int64_t, nCXKFSBDBH, a.number = nCXKFSBDBH, I64("nCXKFSBDBH"))
#define MOLRA_ARG_Lsh(K)       K(int64_t, nLSH, a.number = nLSH, I64("nLSH"))
#define MOLRA_ARG_Wtpch(K)     K(int64_t, nWTPCH, a.number = nWTPCH, I64("nWTPCH"))
#define MOLRA_ARG_Rows(K)      K(std::vector<BatchOrderRow>&, rows, a.rows = &rows, RowList())
#define MOLRA_ARG_Units(K)     K(int32_t, nUnits, a.units = nUnits, I32("nUnits"))
#define MOLRA_ARG_None(K)

// Operations whose plain form takes the shareholder account.
#define MOLRA_GDH_Entrust(F)       F(Gdh)
#define MOLRA_GDH_Tradable(F)      F(Gdh)
#define MOLRA_GDH_Basket(F)        F(Gdh)
#define MOLRA_GDH_Withdraw(F)
#define MOLRA_GDH_BatchWithdraw(F)
#define MOLRA_GDH_BatchEntrust(F)
// clang-format on

// F(kind) applied to each argument of a parenthesised list.
#define MOLRA_EACH(F, list) MOLRA_EACH_(F, MOLRA_UNPAREN list)
#define MOLRA_UNPAREN(...) __VA_ARGS__
#define MOLRA_EACH_(F, ...) MOLRA_EACH_N(__VA_ARGS__, 8, 7, 6, 5, 4, 3, 2, 1)(F, __VA_ARGS__)
#define MOLRA_EACH_N(_1, _2, _3, _4, _5, _6, _7, _8, n, ...) MOLRA_EACH_##n
#define MOLRA_EACH_1(F, a) F(a)
#define MOLRA_EACH_2(F, a, ...) F(a) MOLRA_EACH_1(F, __VA_ARGS__)
#define MOLRA_EACH_3(F, a, ...) F(a) MOLRA_EACH_2(F, __VA_ARGS__)
#define MOLRA_EACH_4(F, a, ...) F(a) MOLRA_EACH_3(F, __VA_ARGS__)
#define MOLRA_EACH_5(F, a, ...) F(a) MOLRA_EACH_4(F, __VA_ARGS__)
#define MOLRA_EACH_6(F, a, ...) F(a) MOLRA_EACH_5(F, __VA_ARGS__)
#define MOLRA_EACH_7(F, a, ...) F(a) MOLRA_EACH_6(F, __VA_ARGS__)
#define MOLRA_EACH_8(F, a, ...) F(a) MOLRA_EACH_7(F, __VA_ARGS__)

// The argument lists of the four forms through one facet F of the arguments: F(kind) gives
// ", <facet>" and F##_FIRST(kind) the first argument's facet without the comma.
#define MOLRA_PLAIN_ARGS(F, op, before, after) \
  F##_FIRST(Khh) MOLRA_EACH(F, before) MOLRA_GDH_##op(F) MOLRA_EACH(F, after)
#define MOLRA_EX_ARGS(F, before, after) F##_FIRST(Info) MOLRA_EACH(F, before) MOLRA_EACH(F, after)
