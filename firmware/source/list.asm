; Tokens to text
