; Expressions
