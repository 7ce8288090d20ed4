/* The grammar of one statement. An action after a name, a number, an operator or the semicolon runs before the
 * next token is read, so that Text is still this token. The reason: in a state that can only reduce, the parser
 * does not read a token, and the marker rules below create such a state at each of these points.
 *
 * All binary rules recurse to the right. The pending operators of the code generator make the operators
 * associate to the left. */

%define api.pure full
%define api.prefix {equation}
%define lr.type lalr
%define lr.default-reduction most
%expect 0

%code top {
  /* The maximum nesting of a statement, in states of the parser. */
  #define YYINITDEPTH 200
  #define YYMAXDEPTH 10000

  #include "vastra/equations/opcodes.h"
  #include "vastra/equations/scanner.h"

  namespace {

  using namespace vastra;

  /* The value of a token is its number. */
  int equationlex(int* value) { return *value = yylex(); }
  void equationerror(const char* message) { yyerror(message); }

  /* The operations of the code generator, on the stacks of this compilation. */
  void End() { compileState.PreParser.End(&compileState.Operands, &compileState.Operators); }
  void Single() { compileState.PreParser.CodeSingle(&compileState.Operands); }
  void Special(int op) { compileState.PreParser.CodeSpecial(op, &compileState.Operands); }
  void Condition(int kind) { compileState.PreParser.CodeCondition(kind, &compileState.Operands); }
  void Math(int op, bool tail) {
    compileState.PreParser.CodeMath(op, &compileState.Operands, &compileState.Operators, tail);
  }
  void Bol(int op, bool tail) {
    compileState.PreParser.CodeBol(op, &compileState.Operands, &compileState.Operators, tail);
  }
  void Compare() { compileState.PreParser.CodeCompare(&compileState.Operands, &compileState.Operators); }
  void Equal() { compileState.PreParser.CodeEqual(&compileState.Operands, &compileState.Operators); }

  /* Push a pending operator or the marker of an open bracket; remove the top one. */
  void Wait(int op) { compileState.Operators.Push(op); }
  void DropWaiting() {
    int dropped;
    compileState.Operators.Pop(dropped);
  }

  /* The last name matched is the one that the statement assigns. */
  void Assign() {
    compileState.nInt = compileState.PreParser.CodeFind(compileState.Text);
    if (compileState.nInt == -1) compileState.PreParser.CodeNewVar(compileState.Text);
    compileState.nTarget = compileState.PreParser.CodeFind(compileState.Text);
  }

  /* The last name matched is an operand. Fails if the name is unknown. */
  bool UseName() {
    compileState.nInt = compileState.PreParser.CodeFind(compileState.Text);
    if (compileState.nInt == -1) return yyerror(""), false;
    compileState.Operands.Push(VariableOperand(compileState.nInt));
    return true;
  }

  }  // namespace
}

/* ORDER TOKEN: the numbers of opcodes.h and scanner.h. */
%token IF 258 THEN 259 ELSE 260 NAME 261 NUMBER 262 COMMA 263
%token BIT_AND 264 BIT_XOR 265 BIT_OR 266 LOGIC_AND 267 LOGIC_OR 268
%token PLUS 269 MINUS 270 TIMES 271 DIVIDE 272 MODULO 273
%token LESS 274 GREATER 275 LESS_EQUAL 276 GREATER_EQUAL 277 EQUAL 278 NOT_EQUAL 279
%token SEMICOLON 280 OPEN 281 CLOSE 282 BIT_NOT 283 LOGIC_NOT 284
%token ABS 285 SIN 286 COS 287 TAN 288 EXP 289 LOG 290 RAND 291 SQRT 292 POW 293
%token COLON 294 QUESTION 295 ASSIGN 296

%%

statement: start NAME target ASSIGN expression SEMICOLON  { End(); YYACCEPT; }
         ;

expression: equality
          | equality QUESTION first expression COLON second expression  { Condition(0); }
          ;

equality: logic_or
        | logic_or equality_operator { Wait($2); } equality  { Equal(); }
        ;

logic_or: logic_and                                       { Single(); }
        | logic_and LOGIC_OR { Bol($2, false); } logic_or  { Bol($2, true); Single(); }
        ;

logic_and: bit_or
         | bit_or LOGIC_AND { Bol($2, false); } logic_and  { Bol($2, true); }
         ;

bit_or: bit_xor
      | bit_xor BIT_OR { Bol($2, false); } bit_or  { Bol($2, true); }
      ;

bit_xor: bit_and
       | bit_and BIT_XOR { Bol($2, false); } bit_xor  { Bol($2, true); }
       ;

bit_and: relation
       | relation BIT_AND { Bol($2, false); } bit_and  { Bol($2, true); }
       ;

relation: sum                                      { Compare(); }
        | sum relation_operator { Wait($2); } sum  { Compare(); }
        ;

sum: product                                         { Math(PLUS, true); }
   | product sum_operator { Math($2, false); } sum  { Math(PLUS, true); }
   ;

product: unary                                                { Math(TIMES, true); }
       | unary product_operator { Math($2, false); } product  { Math(TIMES, true); }
       ;

unary: prefix { Wait($1); } unary  { Equal(); }
     | IF OPEN bracket expression COMMA first expression COMMA second expression CLOSE
         { DropWaiting(); Condition(0); }
     | primary
     ;

primary: OPEN bracket expression CLOSE  { DropWaiting(); }
       | NAME                           { if (!UseName()) YYABORT; }
       | NUMBER                         { compileState.Operands.Push(compileState.dValue); }
       | function
       ;

function: one_argument OPEN bracket sum CLOSE      { DropWaiting(); Special($1); }
        | RAND OPEN bracket CLOSE                  { DropWaiting(); Special($1); }
        | POW OPEN bracket sum COMMA sum CLOSE     { DropWaiting(); Special($1); }
        ;

start:   %empty  { compileState.PreParser.Start(); } ;
target:  %empty  { Assign(); } ;
first:   %empty  { Condition(THEN); } ;
second:  %empty  { Condition(ELSE); } ;
bracket: %empty  { Wait(markerOpen); } ;

equality_operator: EQUAL | NOT_EQUAL ;
relation_operator: LESS | GREATER | LESS_EQUAL | GREATER_EQUAL ;
sum_operator:      PLUS | MINUS ;
product_operator:  TIMES | DIVIDE | MODULO ;
prefix:            MINUS | LOGIC_NOT | BIT_NOT ;
one_argument:      ABS | SIN | COS | TAN | EXP | LOG | SQRT ;
